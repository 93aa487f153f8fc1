#pragma once

#include <string>

#include "logging/log_records.h"

namespace NS_CORBA {

/// The audit of risky operations, with texts whose secrets are masked. Both do nothing for an operation that
/// the security service rates as no risk, and raise InterfaceNotExistException when that service or the audit
/// service isn't there. The text of the audit is what stands in `text` from `begin` on.

void AuditRequest(const TALogRecord& record, const std::string& text, std::size_t begin);

/// @param result 0 for a reply, 1 for any other end
void AuditEnd(const TALogRecord& record, int result, const std::string& text, std::size_t begin);

}  // namespace NS_CORBA
