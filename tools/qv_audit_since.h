#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace qv_tools {

/// The moment that `text` names, in milliseconds since 1970: "2h" (s, m, h, d, w) before `now_ms`, or
/// YYYY-MM-DD, followed by "T" or a blank and HH:MM or HH:MM:SS, then nothing for local time, "Z", or +HH:MM.
/// Nothing when it is none of these.
std::optional<std::int64_t> ParseSince(const std::string& text, std::int64_t now_ms);

}  // namespace qv_tools
