# A comma-separated list for -fsanitize=; the first finding ends the program.
set(TRELVANE_SANITIZE "" CACHE STRING "Sanitizers to build with, such as address,undefined")

if(TRELVANE_SANITIZE)
  add_compile_options(
    -fsanitize=${TRELVANE_SANITIZE}
    -fno-sanitize-recover=all
    -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TRELVANE_SANITIZE})
endif()
