# Debian keeps libraries in folders by processor, also below /usr/local.
if(EXISTS /etc/debian_version AND CMAKE_LIBRARY_ARCHITECTURE
   AND "${CMAKE_INSTALL_LIBDIR}" MATCHES "^(lib)?$")
  set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE})
endif()
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
# One folder of documents, named as the package is.
string(REPLACE "/doc/${PROJECT_NAME}" "/doc/trelvane" CMAKE_INSTALL_DOCDIR
       "${CMAKE_INSTALL_DOCDIR}")

# Components are Debian packages; the programs are in the first one.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME trelvane)
install(TARGETS Trelvane trelvane-batch trelvane-inspect RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES README.md CHANGELOG.md CONTRIBUTING.md LICENSE SECURITY.md packaging/copyright
        DESTINATION ${CMAKE_INSTALL_DOCDIR})
set(install_tracked "include(\"${PROJECT_SOURCE_DIR}/cmake/InstallTracked.cmake\")\ninstall_tracked")
install(CODE "${install_tracked}(docs \"${CMAKE_INSTALL_DOCDIR}/docs\")")
install(CODE "${install_tracked}(examples \"${CMAKE_INSTALL_DOCDIR}/examples\")")
if(NOT WIN32)
  install(FILES man/Trelvane.1 man/trelvane-batch.1 man/trelvane-inspect.1
          DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(CODE "${install_tracked}(share \"${CMAKE_INSTALL_DATAROOTDIR}\")")
endif()

# libtrelvane, for pkg-config and for find_package(Trelvane), wherever the prefix is moved to.
install(TARGETS trelvane_shared EXPORT TrelvaneConfig
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT libtrelvane1
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libtrelvane1
                NAMELINK_COMPONENT libtrelvane-dev
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libtrelvane-dev
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME libtrelvane-dev)
install(FILES library/trelvane.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT TrelvaneConfig NAMESPACE Trelvane::
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Trelvane)
write_basic_package_version_file(TrelvaneConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TrelvaneConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Trelvane)
file(RELATIVE_PATH prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(library/trelvane.pc.in trelvane.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/trelvane.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The Python package, where Debian's Python looks for those of the system; others have the wheel.
configure_file(python/METADATA.in METADATA @ONLY)
set(python_packages lib/python3/dist-packages)
install(CODE "${install_tracked}(python/trelvane \"${python_packages}/trelvane\")"
        COMPONENT python3-trelvane EXCLUDE_FROM_ALL)
install(FILES ${PROJECT_BINARY_DIR}/METADATA
        DESTINATION ${python_packages}/trelvane-${PROJECT_VERSION}.dist-info
        COMPONENT python3-trelvane EXCLUDE_FROM_ALL)
