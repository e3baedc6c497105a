# What makes a program one of Windows: its version, manifest and icon.

# orvelle_windows_resources(<target> <description> [ICON <file>])
function(orvelle_windows_resources target description)
  cmake_parse_arguments(PROGRAM "" "ICON" "" ${ARGN})
  set(PROGRAM_NAME ${target})
  set(PROGRAM_DESCRIPTION ${description})
  set(PROGRAM_HAS_ICON 0)
  if(PROGRAM_ICON)
    set(PROGRAM_HAS_ICON 1)
  endif()
  set(PROGRAM_MANIFEST ${CMAKE_CURRENT_BINARY_DIR}/${target}.manifest)
  set(resources ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/windows/program.manifest.in ${PROGRAM_MANIFEST} @ONLY)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/windows/program.rc.in ${resources} @ONLY)
  set_source_files_properties(${resources} PROPERTIES
    OBJECT_DEPENDS "${PROGRAM_MANIFEST};${PROGRAM_ICON}")
  target_sources(${target} PRIVATE ${resources})
endfunction()
