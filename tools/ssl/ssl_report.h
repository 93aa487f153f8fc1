#pragma once

#include <iosfwd>
#include <string>

#include "tools/ssl/finding.h"

/// What `qv_ssl check` tells, for people and for scripts.
namespace qv_tools {

/// The outcome of a check, as an exit code.
enum SslResult { kSslGood = 0, kSslWarnings = 1, kSslErrors = 2 };

SslResult ResultOf(const Findings& findings);

/// A table with a line per finding, what to do below it, and a line of summary.
void PrintSslCheck(std::ostream& out, const std::string& profile, const Findings& findings);

/// One JSON object: "profile", "result" ("ok", "warnings" or "errors") and "findings", each with "level",
/// "check", "file", "text", "advice" and, where it is about a period, "days_left".
void PrintSslCheckJson(std::ostream& out, const std::string& profile, const Findings& findings);

}  // namespace qv_tools
