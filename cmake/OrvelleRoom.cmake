# A room is one folder under src/ and one static library. Its LINKS are the rooms and
# libraries that it may use; a room that includes beyond them does not link.

add_library(orvelle_options INTERFACE)
target_include_directories(orvelle_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_definitions(orvelle_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_USE_QSTRINGBUILDER
  QT_DISABLE_DEPRECATED_BEFORE=0x050F00)
target_compile_options(orvelle_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2
  -Wcast-qual -Wimplicit-fallthrough -Werror)
if(WIN32)
  # Windows 7 is the oldest that the toolkit runs on.
  target_compile_definitions(orvelle_options INTERFACE
    UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0601)
endif()
if(ORVELLE_SANITIZE)
  target_compile_options(orvelle_options INTERFACE
    -fsanitize=${ORVELLE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(orvelle_options INTERFACE -fsanitize=${ORVELLE_SANITIZE})
endif()

# orvelle_room(<name> SOURCES <files...> LINKS <targets...>)
function(orvelle_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;LINKS" ${ARGN})
  add_library(orvelle_${name} STATIC ${ROOM_SOURCES})
  target_link_libraries(orvelle_${name} PUBLIC orvelle_options ${ROOM_LINKS})
endfunction()

# orvelle_program(<name> SOURCES <files...> LINKS <targets...>)
function(orvelle_program name)
  cmake_parse_arguments(PROGRAM "" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${PROGRAM_SOURCES})
  target_link_libraries(${name} PRIVATE orvelle_options ${PROGRAM_LINKS})
endfunction()

# Builds every suite that also runs under TSan.
add_custom_target(threaded_tests)

# orvelle_test(<name> [THREADED] SOURCES <files...> LINKS <targets...>)
# One Qt Test program for a room. THREADED suites run under TSan as well.
function(orvelle_test name)
  cmake_parse_arguments(TEST "THREADED" "TIMEOUT" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${TEST_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE orvelle_options orvelle_test_support Qt5::Test ${TEST_LINKS})
  add_test(NAME ${name} COMMAND ${name})
  if(NOT TEST_TIMEOUT)
    set(TEST_TIMEOUT 300)
  endif()
  set_tests_properties(${name} PROPERTIES TIMEOUT ${TEST_TIMEOUT})
  if(TEST_THREADED)
    set_tests_properties(${name} PROPERTIES LABELS threaded)
    add_dependencies(threaded_tests ${name})
  endif()
endfunction()
