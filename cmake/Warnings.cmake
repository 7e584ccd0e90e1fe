# Settings that every target of the project builds with; never exported.
add_library(trelvane_settings INTERFACE)

if(MSVC)
  target_compile_options(trelvane_settings INTERFACE
    /W4
    /WX
    /fp:strict)   # floats round after every step
else()
  target_compile_options(trelvane_settings INTERFACE
    -Wall
    -Wextra
    -Wpedantic
    -Wconversion
    -Wdouble-promotion
    -Wimplicit-fallthrough
    -Wnon-virtual-dtor
    -Wold-style-cast
    -Woverloaded-virtual
    # Not plain -Wshadow under g++: an item type of zType bears the name of the type it stands for.
    $<IF:$<CXX_COMPILER_ID:GNU>,-Wshadow=local,-Wshadow>
    -Wsign-conversion
    # g++ 12 sees an overlap in "text" + std::string that is not there (GCC bug 105651).
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
    -Werror
    -ffp-contract=off)   # no fused multiply-add: heights must be the same on every processor
  if(TRELVANE_SANITIZE)
    # Nor does g++ 12 see, then, what std::regex initialises.
    target_compile_options(trelvane_settings INTERFACE
      $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  endif()
endif()
