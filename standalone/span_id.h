#pragma once

#include <string>

namespace qv_standalone {

/// A random id of 16 lower-case hexadecimal digits, never all zero, from the system's random numbers; empty
/// when there are none. Any thread may call it; a forked child gets others than its parent.
std::string NewSpanId() noexcept;

}  // namespace qv_standalone
