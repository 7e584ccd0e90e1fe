# trelvane_schema(<target> <file.fbs>) generates <file>_generated.h from the schema, and
# <file>_bfbs.h with its binary form as an array of bytes, for <target> to include.
function(trelvane_schema target schema)
  get_filename_component(stem ${schema} NAME_WE)
  set(source ${PROJECT_SOURCE_DIR}/${schema})
  set(folder ${PROJECT_BINARY_DIR}/generated)
  get_filename_component(source_folder ${source} DIRECTORY)
  set(code ${folder}/${stem}_generated.h)
  set(binary ${folder}/${stem}.bfbs)

  file(MAKE_DIRECTORY ${folder})
  add_custom_command(
    OUTPUT ${code} ${binary}
    COMMAND ${TRELVANE_FLATC} --cpp --scoped-enums -o ${folder} ${source}
    # The schema's own folder is the root of the file names in the binary form, so that it is the
    # same wherever the project lies.
    COMMAND ${TRELVANE_FLATC} --binary --schema --bfbs-filenames ${source_folder} -o ${folder}
            ${source}
    DEPENDS ${source} VERBATIM)
  target_sources(${target} PRIVATE ${code})
  target_include_directories(${target} SYSTEM PRIVATE ${folder})
  trelvane_embed(${target} ${binary} ${stem}_bfbs)
endfunction()
