#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// Texts that the command line tools show. All of these are reentrant.
namespace qv_tools {

/// `text` fit for a terminal: control characters (also those above 127, and those that turn the direction of
/// writing), and bytes that are no UTF-8, stand as \xNN or \uNNNN. A line end stays when `newline` is given,
/// which then stands in its place.
std::string Printable(const std::string& text, const std::string& newline = "");

/// `text` in a column of `width` letters: filled with blanks, or cut with "..." at its end. `text` is what
/// Printable made.
std::string Column(const std::string& text, std::size_t width);

/// `text` with blanks behind it, or before it when `right`, up to `width` bytes. A longer one stays as it is.
std::string Padded(const std::string& text, std::size_t width, bool right = false);

/// "1 setting", "2 settings".
std::string Counted(std::size_t number, const std::string& what);

/// "2026-11-21 09:21:23" in local time. Times are milliseconds since 1970.
std::string LocalTime(std::int64_t ms);

/// ".456", what LocalTime leaves out.
std::string Milliseconds(std::int64_t ms);

/// "2026-11-21T09:21:23.456Z".
std::string UtcTime(std::int64_t ms);

/// "8 ms", "1.25 s", "2 min 05 s", "3 h 20 min": cut, not rounded.
std::string Duration(std::int64_t ms);

}  // namespace qv_tools
