# Runs while files are installed. Whatever else lies in a folder after somebody worked there is no part
# of the project: only what git tracks is installed. A source tree without git has all of its folder.

# install_tracked(<folder of the project> <folder below the prefix>)
function(install_tracked folder destination)
  cmake_path(SET source NORMALIZE "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../${folder}")
  cmake_path(ABSOLUTE_PATH destination BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}")
  set(files "")
  find_program(TRELVANE_GIT git)
  if(TRELVANE_GIT)
    execute_process(COMMAND ${TRELVANE_GIT} -c core.quotePath=off ls-files
                    WORKING_DIRECTORY ${source} OUTPUT_VARIABLE files ERROR_QUIET
                    OUTPUT_STRIP_TRAILING_WHITESPACE)
    string(REGEX REPLACE "\n" ";" files "${files}")
  endif()
  if(NOT files)
    file(GLOB_RECURSE files RELATIVE ${source} ${source}/*)
    list(FILTER files EXCLUDE REGEX "(^|/)__pycache__/")
  endif()
  foreach(file IN LISTS files)
    get_filename_component(below ${destination}/${file} DIRECTORY)
    file(INSTALL ${source}/${file} DESTINATION ${below} USE_SOURCE_PERMISSIONS)
  endforeach()
endfunction()
