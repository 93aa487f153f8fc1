// The policy managers behind "ORBPolicyManager" and "PolicyCurrent".
#pragma once

#include "qv_orb/policies.h"

namespace qv_orb {

/// Lets ORB::create_policy make the timeout policy, and registers both managers with an ORB that has just
/// been made. Its calls are not bounded at first.
void InstallPolicyManagers(CORBA::ORB_ptr orb);

}  // namespace qv_orb
