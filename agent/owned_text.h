#pragma once

#include <string>

#include "platform/secure_string.h"

namespace NS_CORBA {

/// A copy of `text` made with new[], of exactly its length and end mark, which the caller owns.
inline char* NewText(const std::string& text) {
    const std::size_t size = text.size() + 1;
    char* copy = new char[size];
    strncpy_s(copy, size, text.c_str(), size - 1);
    return copy;
}

}  // namespace NS_CORBA
