#pragma once

#include <string>

#include "demo/agent/accounts.h"
#include "demo/agent/core/inventory.h"
#include "demo/agent/session_directory.h"

namespace qv_demo {

class EventSource;

/// What the servants of the agent work on. Lives as long as the process; each member is safe for any thread.
struct Ems {
    const std::string name;  ///< the EMS's name in the interface, as "Vendor/Name"
    Accounts& accounts;
    Inventory& inventory;
    SessionDirectory& sessions;
    IteratorDirectory& iterators;
    EventSource* const events = nullptr;  ///< null: this EMS sends none
};

}  // namespace qv_demo
