# Warnings for our own code; linked PRIVATE by each of our targets, never by what consumes them.
add_library(qv_warnings INTERFACE)
target_compile_options(qv_warnings INTERFACE
  -Wall -Wextra -Werror -Wshadow=local -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual -Wformat=2
  -Wno-error=deprecated-declarations)
