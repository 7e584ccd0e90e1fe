# Runs in cpack, between installing and packing: lays the files as Debian's policy asks for.

# Honours SOURCE_DATE_EPOCH.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(package IN LISTS CPACK_COMPONENTS_ALL)
  set(share ${CPACK_TEMPORARY_DIRECTORY}/${package}/usr/share)
  set(documents ${share}/doc/${package})
  file(COPY ${CMAKE_CURRENT_LIST_DIR}/../packaging/copyright DESTINATION ${documents})
  file(WRITE ${documents}/changelog
"${package} (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * CHANGELOG.md in the folder of the package trelvane tells what changed.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
  file(GLOB manuals ${share}/man/man1/*.1)
  execute_process(COMMAND gzip -9n ${documents}/changelog ${manuals} COMMAND_ERROR_IS_FATAL ANY)
endforeach()

set(share ${CPACK_TEMPORARY_DIRECTORY}/trelvane/usr/share)
file(REMOVE ${share}/doc/trelvane/LICENSE)  # stands in the file "copyright"
file(RENAME ${share}/zsh/site-functions ${share}/zsh/vendor-completions)
# cpack 3.25 always adds scripts that call ldconfig to a package with a library, beside its trigger.
file(WRITE ${CPACK_TEMPORARY_DIRECTORY}/libtrelvane1/usr/share/lintian/overrides/libtrelvane1
     "libtrelvane1: maintscript-calls-ldconfig\n")
# Whatever the umask of the clone was.
execute_process(COMMAND chmod -R u=rwX,go=rX ${CPACK_TEMPORARY_DIRECTORY}
                COMMAND_ERROR_IS_FATAL ANY)
