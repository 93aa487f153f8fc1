#pragma once

#include <cstring>
#include <string>

namespace NS_CORBA {

/// `text` up to its first NUL: what a reader of a C string sees of it.
inline std::string UpToNul(std::string&& text) {
    text.resize(std::strlen(text.c_str()));
    return std::move(text);
}

}  // namespace NS_CORBA
