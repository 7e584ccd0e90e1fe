include(GNUInstallDirs)
# One folder of documents, named as the package is.
string(REPLACE "/doc/${PROJECT_NAME}" "/doc/trelvane" CMAKE_INSTALL_DOCDIR
       "${CMAKE_INSTALL_DOCDIR}")

install(TARGETS Trelvane trelvane-inspect RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES README.md CHANGELOG.md CONTRIBUTING.md LICENSE SECURITY.md packaging/copyright
        DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR} USE_SOURCE_PERMISSIONS
        PATTERN "__pycache__" EXCLUDE)
if(NOT WIN32)
  install(FILES man/Trelvane.1 man/trelvane-inspect.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(DIRECTORY share/ DESTINATION ${CMAKE_INSTALL_DATAROOTDIR})
endif()
