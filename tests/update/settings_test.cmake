# Which settings of a build the configuration refuses.
set(module ${CMAKE_CURRENT_LIST_DIR}/../../cmake/OrvelleUpdate.cmake)
if(CASE)
  include(${module})
  orvelle_check_update_settings("${SERVER}" "${KEY}")
  return()
endif()

function(expect result server key)
  execute_process(
    COMMAND ${CMAKE_COMMAND} -DCASE=1 "-DSERVER=${server}" "-DKEY=${key}" -P ${CMAKE_CURRENT_LIST_FILE}
    RESULT_VARIABLE status ERROR_VARIABLE error)
  if((status EQUAL 0 AND NOT result STREQUAL "accepted") OR
     (NOT status EQUAL 0 AND NOT error MATCHES "${result}"))
    message(SEND_ERROR "server '${server}', key '${key}': ${status} ${error}, not: ${result}")
  endif()
endfunction()

set(key RWSewEjYErK6tINk+dicUTzMAOW6jjwsusQVumNO3mfi9bzNMv47HVPi)
set(https https://example.org)
expect("accepted" "" "")
expect("accepted" "" ${key})
expect("accepted" ${https} ${key})
expect("accepted" http://127.0.0.1:8080 ${key})
expect("accepted" http://localhost ${key})
expect("not ORVELLE_UPDATE_KEY" ${https} "")
foreach(bad RWSe ${key}A "AB${key}" "${key}==" "Rx${key}" "untrusted comment: minisign public key B4BAB212D848C09E aa")
  expect("no public key of minisign" ${https} ${bad})
  expect("no public key of minisign" "" ${bad})
endforeach()
foreach(bad http://example.org http://127.0.0.1.example.org http://localhost@example.org
    ftp://example.org example.org https:// " https://example.org")
  expect("must begin with https" ${bad} ${key})
endforeach()
