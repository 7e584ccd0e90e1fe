# Every library comes from the system or from vcpkg. Where a package has no CMake description on
# Debian, its pkg-config file or plain library is used.
find_package(nlohmann_json 3.8 REQUIRED)
find_package(PkgConfig QUIET)

# trelvane_library(<target> <pkg-config module> <header> <library names...>)
function(trelvane_library target module header)
  add_library(${target} INTERFACE)
  if(TRELVANE_ALONE)
    list(TRANSFORM ARGN REPLACE "(.+)" "lib\\1.a")
  elseif(PkgConfig_FOUND)
    pkg_check_modules(${target}_module QUIET IMPORTED_TARGET ${module})
  endif()
  if(TARGET PkgConfig::${target}_module)
    target_link_libraries(${target} INTERFACE PkgConfig::${target}_module)
    return()
  endif()
  find_path(${target}_include ${header} REQUIRED)
  find_library(${target}_file NAMES ${ARGN} REQUIRED)
  target_include_directories(${target} SYSTEM INTERFACE ${${target}_include})
  target_link_libraries(${target} INTERFACE ${${target}_file})
endfunction()

trelvane_library(trelvane_flatbuffers flatbuffers flatbuffers/flatbuffers.h flatbuffers)
trelvane_library(trelvane_libarchive libarchive archive.h archive libarchive)
trelvane_library(trelvane_libdeflate libdeflate libdeflate.h deflate libdeflate)
trelvane_library(trelvane_lz4 liblz4 lz4frame.h lz4 liblz4)
trelvane_library(trelvane_zstd libzstd zstd.h zstd libzstd)
if(TRELVANE_ALONE)
  set(ZLIB_USE_STATIC_LIBS ON)
endif()
find_package(ZLIB REQUIRED)
set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)

if(TRELVANE_ALONE)
  # Of libarchive tar alone is used. Its table of formats stays empty, so that they and the
  # libraries that they need are left out.
  foreach(format 7zip ar_bsd ar_svr4 cpio cpio_bin cpio_newc cpio_odc cpio_pwb iso9660 mtree
                 mtree_classic pax pax_restricted raw shar shar_dump v7tar warc xar zip)
    target_link_options(trelvane_libarchive INTERFACE
                        LINKER:--defsym=archive_write_set_format_${format}=0)
  endforeach()
  target_link_options(trelvane_libarchive INTERFACE -static-libstdc++ -static-libgcc)
endif()

find_program(TRELVANE_FLATC NAMES flatc REQUIRED)

# Only trelvane-inspect and trelvane-batch use these.
find_package(CLI11 REQUIRED)
find_package(PNG REQUIRED)
find_package(Freetype REQUIRED)
# It carries its font along, so that a picture looks the same everywhere.
find_file(TRELVANE_FONT DejaVuSans.ttf REQUIRED
          PATHS /usr/share/fonts/truetype/dejavu /usr/share/fonts/dejavu-sans-fonts
                /usr/share/fonts/TTF
          DOC "Font of the pictures, DejaVu Sans")
