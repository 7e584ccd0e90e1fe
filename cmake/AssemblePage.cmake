# cmake -DPAGE=<html> -DSTYLE=<css> -DSCRIPTS=<mjs;...> -DOUTPUT=<html> -P AssemblePage.cmake
#
# A page that opens from disk cannot import modules, so each becomes a function that returns what it
# exports, and those that import from it stand below it. Of all ways to write imports and exports,
# modules use these alone:
#   import {a, b} from "./other.mjs";
#   export const a =    export function a(    export class A
cmake_minimum_required(VERSION 3.25)

set(name "[A-Za-z_][A-Za-z0-9_]*")

# join_module(<file>): appends the module to ${script}.
function(join_module file)
  file(READ ${file} content)
  get_filename_component(module ${file} NAME)
  set(content "\n${content}")
  while(content MATCHES "\nimport {(${name}(, ${name})*)} from \"\\./([a-z0-9]+\\.mjs)\";\n")
    set(line "${CMAKE_MATCH_0}")
    set(other "${CMAKE_MATCH_3}")
    set(names "${CMAKE_MATCH_1}")
    string(REPLACE ", " ";" wanted "${names}")
    foreach(one IN LISTS wanted)
      if(NOT one IN_LIST exports_${other})
        message(FATAL_ERROR "${module} imports ${one}, which no ${other} above it exports")
      endif()
    endforeach()
    string(REPLACE "${line}" "\nconst {${names}} = modules[\"${other}\"];\n" content "${content}")
  endwhile()
  string(REGEX MATCHALL "\nexport (const|function|class) ${name}" exports "${content}")
  string(REGEX REPLACE "\nexport (const|function|class) " "\n\\1 " content "${content}")
  if(content MATCHES "\n[ \t]*((import|export)[^A-Za-z0-9_][^\n]*)")
    message(FATAL_ERROR "${module}: the page's build does not know this form: ${CMAKE_MATCH_1}")
  endif()
  list(TRANSFORM exports REPLACE ".* " "")
  set(exports_${module} "${exports}" PARENT_SCOPE)
  list(JOIN exports ", " exports)
  string(APPEND script
         "modules[\"${module}\"] = (() => {${content}return {${exports}};\n})();\n\n")
  set(script "${script}" PARENT_SCOPE)
endfunction()

file(READ ${PAGE} page)
file(READ ${STYLE} style)
set(script "const modules = {};\n\n")
foreach(file IN LISTS SCRIPTS)
  join_module(${file})
endforeach()
string(REPLACE "/* style */" "${style}" page "${page}")
string(REPLACE "/* script */" "${script}" page "${page}")
file(WRITE ${OUTPUT} "${page}")
