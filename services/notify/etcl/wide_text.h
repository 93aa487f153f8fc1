#pragma once

#include <string>
#include <string_view>

namespace qv_notify::etcl {

/// UTF-8 of UTF-16 as GIOP carries it: big-endian unless a byte order mark says otherwise. What is no
/// character becomes U+FFFD.
std::string Utf8Of(std::string_view utf16);

}  // namespace qv_notify::etcl
