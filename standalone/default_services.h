#pragma once

#include "platform/service_interface.h"

namespace qv_standalone {

/// The process's own security service, made from the configuration on first use and never destroyed. Throws
/// std::exception when it can't be made.
NS_BUNDLEMGR1::ServiceInterface& DefaultSecurityService();

/// As DefaultSecurityService, for the audit service.
NS_BUNDLEMGR1::ServiceInterface& DefaultAuditService();

}  // namespace qv_standalone
