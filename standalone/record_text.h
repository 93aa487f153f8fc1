#pragma once

#include <string>

namespace qv_standalone {

/// `text` fit for one log record: control characters stand as \xNN, each further line is indented so that it
/// can't be taken for a record, line ends at the end are dropped. Other bytes stay as they are. Reentrant.
std::string RecordText(const std::string& text);

/// Appends RecordText of `text` to `out`.
void AppendRecordText(std::string& out, const std::string& text);

/// `text` on one line: control characters, line ends included, stand as \xNN. Reentrant.
std::string OneLine(const std::string& text);

/// Appends OneLine of `text` to `out`.
void AppendOneLine(std::string& out, const std::string& text);

/// The name that goes with a level: "critical", "error", "warning", "trace" for 0 to 3, "debug" above,
/// "record" below.
const char* LevelName(int level);

}  // namespace qv_standalone
