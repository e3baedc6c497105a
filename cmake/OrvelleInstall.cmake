# What `cmake --install` puts where: programs into bin, all else into share.

include(GNUInstallDirs)

# The program finds them from its own folder, so the whole tree may be moved.
set(ORVELLE_INSTALL_DATA ${CMAKE_INSTALL_FULL_DATADIR}/orvelle)
set(ORVELLE_INSTALL_DOC ${CMAKE_INSTALL_FULL_DATADIR}/doc/orvelle)

# After the targets are known.
function(orvelle_install)
  install(TARGETS orvelle orvelle-camera RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(DIRECTORY resources/language DESTINATION ${CMAKE_INSTALL_DATADIR}/orvelle
    FILES_MATCHING PATTERN "*.lg")
  set(doc ${CMAKE_INSTALL_DATADIR}/doc/orvelle)
  file(GLOB manuals CONFIGURE_DEPENDS docs/manual*.md)
  install(FILES ${manuals} CHANGELOG.md LICENSE DESTINATION ${doc})
  install(DIRECTORY docs/images DESTINATION ${doc} FILES_MATCHING PATTERN "*.png")
endfunction()
