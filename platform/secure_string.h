#pragma once

#include <cstdarg>
#include <cstddef>

#include "platform/export.h"

// The bounds-checked string functions. `size` is the size of the destination in bytes, end mark included;
// `count` is the most characters to store, end mark excluded. Whatever the result, a destination that isn't
// null and has room is left terminated, and nothing is ever written behind it. Reentrant.
extern "C" {

/// Formats into `dest`. Returns the number of characters stored, end mark excluded; -1 when an argument is
/// unusable, the format fails, or the text is longer than `count` or than `size` - 1. In the last case `dest`
/// holds the part that fits.
QV_API int snprintf_s(char* dest, std::size_t size, std::size_t count, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

/// As snprintf_s, with the arguments in `args`, which is used up.
QV_API int vsnprintf_s(char* dest, std::size_t size, std::size_t count, const char* format, std::va_list args)
    __attribute__((format(printf, 4, 0)));

/// Copies `src`, or its first `count` characters, into `dest` and terminates it. 0 on success, EINVAL for an
/// unusable argument, ERANGE when that text doesn't fit into `size`; `dest` is then empty.
QV_API int strncpy_s(char* dest, std::size_t size, const char* src, std::size_t count);
}
