// What the seam keeps for the process's one ORB.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "qv_orb/orb_initializer.h"
#include "servant_limit.h"

namespace qv_orb {

/// Written while CORBA::ORB_init runs and when the ORB is destroyed, read without a lock by ORB threads
/// between.
struct OrbState {
    std::string orb_id;
    std::string server_id;
    std::vector<std::string> arguments;
    std::vector<PortableInterceptor::ServerRequestInterceptor_var> server_interceptors;
    PortableInterceptor::SlotId slot_count = 0;
    unsigned orb_number = 0;  // counts the ORBs of the process
    bool initialising = false;
    std::atomic<bool> orb_exists{false};  // written under the lock of ORB_init
    ServantLimit servants;
};

OrbState& orb_state();

/// The initializers registered so far, each with a reference of its own. Thread-safe.
std::vector<PortableInterceptor::ORBInitializer_var> RegisteredInitializers();

}  // namespace qv_orb
