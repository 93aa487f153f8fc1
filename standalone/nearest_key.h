#pragma once

#include <string>

namespace qv_standalone {

/// The key of any table that `key` was probably meant to be: near in spelling, upper and lower case not told
/// apart. Empty when none is near.
std::string NearestKey(const std::string& key);

/// As NearestKey, for the name of a table.
std::string NearestTable(const std::string& name);

/// The fewest insertions, deletions, replacements and swaps of neighbours that make `b` of `a`.
std::size_t EditDistance(const std::string& a, const std::string& b);

}  // namespace qv_standalone
