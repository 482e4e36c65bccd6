# The warnings, and the one floating-point rule, that every target of this project is built with.
add_library(kestrel_warnings INTERFACE)
target_compile_options(kestrel_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wno-sign-conversion
  $<$<BOOL:${KESTREL_WERROR}>:-Werror>
  # g++ 12 sees overlapping copies in plain additions of std::string (GCC bug 105651).
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  # A multiply and an add stay two roundings: vector kernels, their scalar twins and every processor
  # must give the same bits.
  -ffp-contract=off)

if(KESTREL_SANITIZE)
  add_compile_options(-fsanitize=${KESTREL_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KESTREL_SANITIZE})
  if(KESTREL_SANITIZE MATCHES "undefined")
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
endif()
