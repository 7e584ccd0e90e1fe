# Runs in cpack, between installing and packing: lays the files as Debian's policy asks for.
set(share ${CPACK_TEMPORARY_DIRECTORY}/usr/share)
set(documents ${share}/doc/${CPACK_PACKAGE_NAME})

# Honours SOURCE_DATE_EPOCH.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${documents}/changelog
"${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * CHANGELOG.md in this folder tells what changed.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
file(GLOB manuals ${share}/man/man1/*.1)
execute_process(COMMAND gzip -9n ${documents}/changelog ${manuals} COMMAND_ERROR_IS_FATAL ANY)

file(REMOVE ${documents}/LICENSE)  # stands in the file "copyright"
file(RENAME ${share}/zsh/site-functions ${share}/zsh/vendor-completions)
# Whatever the umask of the clone was.
execute_process(COMMAND chmod -R u=rwX,go=rX ${CPACK_TEMPORARY_DIRECTORY}
                COMMAND_ERROR_IS_FATAL ANY)
