# What cpack needs to make the Debian packages, one of each component; scripts/package runs it.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME trelvane)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT
    "Seed 87e22051 maintainers <maintainers@users.noreply.c-seed-87e22051.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/DebianLayout.cmake)

# trelvane_package(<component> SECTION <section> SUMMARY <line> DESCRIPTION <text>
#                  [DEPENDS <packages>] [SUGGESTS <packages>])
macro(trelvane_package component)
  cmake_parse_arguments(package "" "SECTION;SUMMARY;DESCRIPTION;DEPENDS;SUGGESTS" "" ${ARGN})
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  string(TOUPPER ${component} name)
  set(CPACK_DEBIAN_${name}_PACKAGE_NAME ${component})
  set(CPACK_DEBIAN_${name}_PACKAGE_SECTION ${package_SECTION})
  set(CPACK_DEBIAN_${name}_PACKAGE_DEPENDS "${package_DEPENDS}")
  set(CPACK_DEBIAN_${name}_PACKAGE_SUGGESTS "${package_SUGGESTS}")
  set(CPACK_DEBIAN_${name}_DESCRIPTION "${package_SUMMARY}\n${package_DESCRIPTION}")
endmacro()

trelvane_package(trelvane SECTION science
  SUMMARY "converter and viewer of 3D scanner data"
  SUGGESTS python3  # for the examples
  DESCRIPTION
"Trelvane converts surfaces, profiles and point clouds between Digital Surf
files (.sur, .pro), PCD, a compact format of its own (.srf) and recordings of
scanners, which are MCAP files that carry their schema, and writes recordings
as CSV tables.

trelvane-batch does so with folders and lists of files, on all cores or in
parts on many machines, and goes on where an earlier run was interrupted.

trelvane-inspect tells what such files hold, checks them for damage, and draws
them as pictures and as pages for a web browser.")
trelvane_package(libtrelvane1 SECTION libs
  SUMMARY "library for 3D scanner data"
  DESCRIPTION
"libtrelvane reads and writes surfaces, profiles, point clouds and recordings
of 3D scanners in all formats that Trelvane converts between.")
# What links to the library depends on its package; the system looks for libraries anew.
set(control ${PROJECT_BINARY_DIR}/debian)
file(WRITE ${control}/shlibs "libtrelvane 1 libtrelvane1 (>= ${PROJECT_VERSION})\n")
file(WRITE ${control}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBTRELVANE1_PACKAGE_CONTROL_EXTRA ${control}/shlibs ${control}/triggers)
trelvane_package(libtrelvane-dev SECTION libdevel
  SUMMARY "library for 3D scanner data (development files)"
  DEPENDS "libtrelvane1 (= ${PROJECT_VERSION})"
  DESCRIPTION
"libtrelvane reads and writes surfaces, profiles, point clouds and recordings
of 3D scanners in all formats that Trelvane converts between.

This package has its C header, and what pkg-config and CMake need to find it.")
trelvane_package(python3-trelvane SECTION python
  SUMMARY "3D scanner data in Python"
  DEPENDS "libtrelvane1 (= ${PROJECT_VERSION}), python3 (>= 3.9), python3-numpy"
  SUGGESTS "trelvane, python3-xarray, python3-distributed"
  DESCRIPTION
"The package trelvane reads and writes surfaces, profiles, point clouds and
recordings of 3D scanners as numpy arrays, by the library libtrelvane.")
set(CPACK_DEBIAN_PYTHON3-TRELVANE_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON3-TRELVANE_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON3-TRELVANE_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/packaging/python3-trelvane/postinst
    ${PROJECT_SOURCE_DIR}/packaging/python3-trelvane/prerm)
include(CPack)
