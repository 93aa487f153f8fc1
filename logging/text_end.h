#pragma once

#include <cstring>
#include <string>

namespace NS_CORBA {

/// Ends `text` at the first NUL at or behind `begin`: what a reader of a C string sees of it.
inline void CutAtNul(std::string& text, std::size_t begin = 0) {
    text.resize(begin + std::strlen(text.c_str() + begin));
}

}  // namespace NS_CORBA
