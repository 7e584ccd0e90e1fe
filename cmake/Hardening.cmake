# Protections of a program that reads files from anywhere. They cost nothing that could be measured.
if(NOT MSVC)
  include(CheckPIESupported)
  check_pie_supported(LANGUAGES CXX)
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  add_compile_options(-fstack-protector-strong)
  # Checked memory and string functions need optimisation; the sanitizers check them themselves.
  if(NOT TRELVANE_SANITIZE)
    add_compile_options($<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE>
                        $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=2>)
  endif()
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    add_link_options(LINKER:-z,relro,-z,now,-z,noexecstack)
  endif()
endif()
