#pragma once

#include <iosfwd>

namespace qv_tools {

struct AuditRow;

/// The table's heading, 100 columns wide.
void PrintAuditHeading(std::ostream& out);

/// One line of the table.
void PrintAuditLine(std::ostream& out, const AuditRow& row);

/// The whole texts of a row, indented below its line.
void PrintAuditDetail(std::ostream& out, const AuditRow& row);

/// The row as a JSON object on one line. Bytes that are no UTF-8 come out as U+FFFD.
void PrintAuditJson(std::ostream& out, const AuditRow& row);

}  // namespace qv_tools
