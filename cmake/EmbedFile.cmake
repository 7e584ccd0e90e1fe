# trelvane_embed(<target> <file> <name>) makes the bytes of a file the array <name> in a header
# <name>.h for <target> to include.
function(trelvane_embed target file name)
  set(folder ${PROJECT_BINARY_DIR}/generated)
  set(header ${folder}/${name}.h)
  file(MAKE_DIRECTORY ${folder})
  add_custom_command(
    OUTPUT ${header}
    COMMAND ${CMAKE_COMMAND} -DINPUT=${file} -DOUTPUT=${header} -DNAME=${name}
            -P ${PROJECT_SOURCE_DIR}/cmake/EmbedBinary.cmake
    DEPENDS ${file} ${PROJECT_SOURCE_DIR}/cmake/EmbedBinary.cmake VERBATIM)
  target_sources(${target} PRIVATE ${header})
  target_include_directories(${target} SYSTEM PRIVATE ${folder})
endfunction()
