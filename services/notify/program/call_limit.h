// How long the service waits for others.
#pragma once

#include <tao/ORB.h>

#include <chrono>

namespace qv_notify {

/// No call of this ORB takes longer than that from now on, unless it says so itself; it ends with
/// CORBA::TIMEOUT then.
void LimitCalls(CORBA::ORB_ptr orb, std::chrono::milliseconds limit);

}  // namespace qv_notify
