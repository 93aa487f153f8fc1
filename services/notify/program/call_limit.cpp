#include "services/notify/program/call_limit.h"

#include <tao/Messaging/Messaging.h>
#include <tao/Policy_ManagerC.h>
#include <tao/TimeBaseC.h>

namespace qv_notify {

void LimitCalls(CORBA::ORB_ptr orb, std::chrono::milliseconds limit) {
    constexpr TimeBase::TimeT kUnitsPerMillisecond = 10000;
    CORBA::Any value;
    value <<= static_cast<TimeBase::TimeT>(limit.count()) * kUnitsPerMillisecond;
    CORBA::PolicyList policies(1);
    policies.length(1);
    policies[0] = orb->create_policy(Messaging::RELATIVE_RT_TIMEOUT_POLICY_TYPE, value);
    const CORBA::Object_var object = orb->resolve_initial_references("ORBPolicyManager");
    const CORBA::PolicyManager_var manager = CORBA::PolicyManager::_narrow(object.in());
    manager->set_policy_overrides(policies, CORBA::SET_OVERRIDE);
    policies[0]->destroy();
}

}  // namespace qv_notify
