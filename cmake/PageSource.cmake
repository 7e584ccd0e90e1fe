# trelvane_page(<target> <folder> <module...>) makes one page of page.html, page.css and the modules
# in <folder>, in this order, and page_html.h with it as an array of bytes, for <target> to include.
function(trelvane_page target folder)
  set(source ${PROJECT_SOURCE_DIR}/${folder})
  set(page ${PROJECT_BINARY_DIR}/generated/page.html)
  set(assemble ${PROJECT_SOURCE_DIR}/cmake/AssemblePage.cmake)
  list(TRANSFORM ARGN PREPEND ${source}/ OUTPUT_VARIABLE scripts)
  add_custom_command(
    OUTPUT ${page}
    COMMAND ${CMAKE_COMMAND} -DPAGE=${source}/page.html -DSTYLE=${source}/page.css
            "-DSCRIPTS=${scripts}" -DOUTPUT=${page} -P ${assemble}
    DEPENDS ${source}/page.html ${source}/page.css ${scripts} ${assemble} VERBATIM)
  trelvane_embed(${target} ${page} page_html)
endfunction()
