#pragma once

#include <iosfwd>

namespace qv_tools {

/// Writes the page of all settings, docs/operator/configuration.md, as CommonMark with tables: a section per
/// group, a row per setting. Never fails.
void PrintMarkdown(std::ostream& out);

}  // namespace qv_tools
