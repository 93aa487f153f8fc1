#pragma once

#include <string>

namespace qv_standalone {

/// Writes a line into the log `category` of the log service that is in force, or onto the standard error
/// when there is none. For rare lines: the service is looked up for each. Never throws. Any thread may call
/// it.
void WritePlatformLog(const std::string& category, int level, const std::string& text) noexcept;

}  // namespace qv_standalone
