#pragma once

#include <string>

#include "logging/log_records.h"

namespace NS_CORBA {

/// The audit of risky operations, from their records, whose secrets are masked by then. Both do nothing for
/// an operation that the security service rates as no risk, and raise InterfaceNotExistException when that
/// service or the audit service isn't there.

void AuditRequest(const TALogRecord& record);

/// @param result 0 for a reply, 1 for any other end
/// @param detailBegin where the detail starts in the record's paramInfo
void AuditEnd(const TALogRecord& record, int result, std::size_t detailBegin);

}  // namespace NS_CORBA
