#pragma once

#include <map>
#include <string>

#include "platform/export.h"
#include "platform/service_interface.h"

namespace NS_CORBA {

/// The audit service, found by the name "AuditLogif": what was asked for by risky operations, and how they
/// ended. The order of the virtual operations is part of the interface. Thread safety: any thread may call
/// any operation. Errors: what an operation raises is logged and costs the operation's record what was still
/// to come; the request is served all the same.
class QV_API AuditLogif : public NS_BUNDLEMGR1::ServiceInterface {
  public:
    /// An audited operation begins; `fields` holds what is known of it, by name.
    virtual void BeginAudit(const unsigned long& requestId,
                            const std::map<std::string, std::string>& fields) = 0;

    /// An audited operation has ended; `result` is 0 when it succeeded and 1 when it didn't.
    virtual void EndAudit(const unsigned long& requestId, const int& result, const std::string& detail) = 0;
};

}  // namespace NS_CORBA
