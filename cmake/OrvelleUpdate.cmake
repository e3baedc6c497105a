# Stops the configuration of a build that would take updates from anybody: over anything but https
# (http from the same machine is for tests), or without the key that they are signed with.
function(orvelle_check_update_settings server key)
  if(NOT server STREQUAL "" AND NOT server MATCHES "^(https://[^/].*$|http://(localhost|127\\.0\\.0\\.1|\\[::1\\])(:[0-9]+)?$)")
    message(FATAL_ERROR "ORVELLE_UPDATE_SERVER must begin with https://, it is: ${server}")
  endif()
  if(NOT server STREQUAL "" AND key STREQUAL "")
    message(FATAL_ERROR "ORVELLE_UPDATE_SERVER is set, but not ORVELLE_UPDATE_KEY, the public key "
      "of minisign whose signatures the updates carry.")
  endif()
  # The base64 of 42 bytes that begin with "Ed".
  string(LENGTH "${key}" length)
  if(NOT key STREQUAL "" AND NOT (length EQUAL 56 AND key MATCHES "^RW[QRST][A-Za-z0-9+/]+$"))
    message(FATAL_ERROR "ORVELLE_UPDATE_KEY is no public key of minisign, 56 characters that begin "
      "with RW; it is: ${key}")
  endif()
endfunction()
