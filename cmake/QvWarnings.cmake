# Warnings for our own code, which are errors to GCC; linked PRIVATE by each of our targets, never by what consumes them.
add_library(qv_warnings INTERFACE)
target_compile_options(qv_warnings INTERFACE
  -Wall -Wextra -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual -Wformat=2
  $<$<CXX_COMPILER_ID:GNU>:-Werror;-Wshadow=local>
  -Wno-error=deprecated-declarations)
if(QV_SANITIZE MATCHES undefined)
  # The checks that UBSan adds to virtual bases make GCC 12 see accesses that there are none of.
  target_compile_options(qv_warnings INTERFACE -Wno-array-bounds)
endif()
