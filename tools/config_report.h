#pragma once

#include <iosfwd>

namespace qv_standalone {
struct SettingsFile;
}

/// What qv_config tells, for people and for scripts. Each function writes to `out` and never fails.
namespace qv_tools {

/// The outcome of a check, as an exit code.
enum CheckResult { kGood = 0, kFindings = 1, kUnusable = 2 };

CheckResult ResultOf(const qv_standalone::SettingsFile& file);

/// One line per finding and one of summary.
void PrintCheck(std::ostream& out, const qv_standalone::SettingsFile& file);

/// One JSON object: "file", "result" ("ok", "findings" or "unusable"), "settings" (how many are taken from
/// the file) and "findings", each with "line", "key", "problem" and "taken".
void PrintCheckJson(std::ostream& out, const qv_standalone::SettingsFile& file);

/// All settings as a table of text.
void PrintList(std::ostream& out);

/// All settings as a JSON array.
void PrintListJson(std::ostream& out);

}  // namespace qv_tools
