#include "qv_orb/policies.h"

namespace Messaging {

RelativeRoundtripTimeoutPolicy::RelativeRoundtripTimeoutPolicy(TimeBase::TimeT relative_expiry)
    : CORBA::Policy(RELATIVE_RT_TIMEOUT_POLICY_TYPE), relative_expiry_(relative_expiry) {}

CORBA::Policy_ptr RelativeRoundtripTimeoutPolicy::copy() {
    return new RelativeRoundtripTimeoutPolicy(relative_expiry_);
}

RelativeRoundtripTimeoutPolicy* RelativeRoundtripTimeoutPolicy::_duplicate(
    RelativeRoundtripTimeoutPolicy* policy) {
    if (policy != nullptr) {
        policy->_NP_incrRefCount();
    }
    return policy;
}

RelativeRoundtripTimeoutPolicy* RelativeRoundtripTimeoutPolicy::_narrow(CORBA::Object_ptr object) {
    return CORBA::is_nil(object) ? nullptr
                                 : _duplicate(dynamic_cast<RelativeRoundtripTimeoutPolicy*>(object));
}

}  // namespace Messaging
