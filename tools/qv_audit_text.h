#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace qv_tools {

/// `text` fit for a terminal: control characters (also those above 127, and those that turn the direction of
/// writing), and bytes that are no UTF-8, stand as \xNN or \uNNNN. A line end stays when `newline` is given,
/// which then stands in its place.
std::string Printable(const std::string& text, const std::string& newline = "");

/// `text` in a column of `width` letters: filled with blanks, or cut with "..." at its end. `text` is what
/// Printable made.
std::string Column(const std::string& text, std::size_t width);

/// The moment that `text` names, in milliseconds since 1970: "2h" (s, m, h, d, w) before `now_ms`, or
/// YYYY-MM-DD, followed by "T" or a blank and HH:MM or HH:MM:SS, then nothing for local time, "Z", or +HH:MM.
/// Nothing when it is none of these.
std::optional<std::int64_t> ParseSince(const std::string& text, std::int64_t now_ms);

/// "2026-11-21 09:21:23" in local time.
std::string LocalTime(std::int64_t ms);

/// "2026-11-21T09:21:23.456Z".
std::string UtcTime(std::int64_t ms);

/// "8 ms", "1.250 s", "2 min 5 s", "3 h 20 min".
std::string Duration(std::int64_t ms);

}  // namespace qv_tools
