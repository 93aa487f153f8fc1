#pragma once

#include <string>

namespace qv_standalone {

/// A random UUID (RFC 4122, version 4) in its text form of 36 characters, lower case. Any thread may call it;
/// a forked child gets others than its parent.
std::string RandomUUID();

}  // namespace qv_standalone
