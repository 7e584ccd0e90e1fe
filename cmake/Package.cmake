# What cpack needs to make a Debian package; scripts/package runs it.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME trelvane)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT
    "Seed 87e22051 maintainers <maintainers@users.noreply.c-seed-87e22051.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "converter and viewer of 3D scanner data")
set(CPACK_PACKAGE_DESCRIPTION
"Trelvane converts surfaces, profiles and point clouds between Digital Surf
files (.sur, .pro), PCD, a compact format of its own (.srf) and recordings of
scanners, which are MCAP files that carry their schema, and writes recordings
as CSV tables.

trelvane-inspect tells what such files hold, checks them for damage, and draws
them as pictures and as pages for a web browser.")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "python3")  # for the examples
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/DebianLayout.cmake)
include(CPack)
