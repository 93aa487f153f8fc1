#pragma once

#include <string>

namespace qv_demo {

/// Writes one line to standard output at once. Lines of several threads don't mix.
void Say(const std::string& line);

}  // namespace qv_demo
