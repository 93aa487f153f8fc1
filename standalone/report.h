#pragma once

#include <string>

namespace qv_standalone {

/// Tells the operator `sentence` on the standard error, as one line of its own. Never throws. Any thread may
/// call it.
void Report(const std::string& sentence) noexcept;

}  // namespace qv_standalone
