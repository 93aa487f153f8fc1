#include "platform/secure_string.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

extern "C" {

int vsnprintf_s(char* dest, std::size_t size, std::size_t count, const char* format, std::va_list args) {
    if (dest == nullptr || size == 0) {
        return -1;
    }
    dest[0] = '\0';
    if (format == nullptr) {
        return -1;
    }
    const std::size_t room = std::min(size - 1, count);
    const int length = std::vsnprintf(dest, room + 1, format, args);
    if (length < 0) {
        dest[0] = '\0';
        return -1;
    }
    return static_cast<std::size_t>(length) > room ? -1 : length;
}

int snprintf_s(char* dest, std::size_t size, std::size_t count, const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    const int result = vsnprintf_s(dest, size, count, format, args);
    va_end(args);
    return result;
}

int strncpy_s(char* dest, std::size_t size, const char* src, std::size_t count) {
    if (dest == nullptr || size == 0) {
        return EINVAL;
    }
    dest[0] = '\0';
    if (src == nullptr) {
        return EINVAL;
    }
    const std::size_t length = strnlen(src, count);
    if (length >= size) {
        return ERANGE;
    }
    std::memcpy(dest, src, length);
    dest[length] = '\0';
    return 0;
}
}
