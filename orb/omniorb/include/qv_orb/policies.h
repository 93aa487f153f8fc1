// Client-side policy overrides (CORBA 3.0, 4.9) and the one policy that the seam offers for them, the
// relative round-trip timeout (22.2.4.5).
#pragma once

#include "qv_orb/local_interface.h"

#include <TimeBase.hh>

namespace CORBA {

enum SetOverrideType { SET_OVERRIDE, ADD_OVERRIDE };

class PolicyManager;
class PolicyCurrent;
using PolicyManager_ptr = PolicyManager*;
using PolicyManager_var = qv_orb::LocalVar<PolicyManager>;
using PolicyCurrent_ptr = PolicyCurrent*;
using PolicyCurrent_var = qv_orb::LocalVar<PolicyCurrent>;

/// The overrides of all calls of the ORB: initial reference "ORBPolicyManager". Thread-safe.
class QV_ORB_API PolicyManager : public virtual qv_orb::CountedLocalObject {
  public:
    QV_ORB_LOCAL_INTERFACE(PolicyManager)

    /// Copies of the overrides of these types, or of all with an empty list. The caller's.
    virtual PolicyList* get_policy_overrides(const PolicyTypeSeq& types) = 0;
    /// Sets overrides beside those that are there (ADD_OVERRIDE), or in the place of all (SET_OVERRIDE).
    /// Raises NO_PERMISSION for a policy of another kind than the relative round-trip timeout, BAD_PARAM for
    /// a nil one and for two of the same type; nothing is changed then.
    virtual void set_policy_overrides(const PolicyList& policies, SetOverrideType set_add) = 0;
};

/// The overrides of the calling thread, which win over the ORB's: initial reference "PolicyCurrent". They
/// stay with the thread to its end, or until it changes them.
class QV_ORB_API PolicyCurrent : public virtual PolicyManager {
  public:
    QV_ORB_LOCAL_INTERFACE(PolicyCurrent)
};

}  // namespace CORBA

namespace Messaging {

constexpr CORBA::PolicyType RELATIVE_RT_TIMEOUT_POLICY_TYPE = 32;

class RelativeRoundtripTimeoutPolicy;
using RelativeRoundtripTimeoutPolicy_ptr = RelativeRoundtripTimeoutPolicy*;
using RelativeRoundtripTimeoutPolicy_var = qv_orb::LocalVar<RelativeRoundtripTimeoutPolicy>;

/// How long a call may take, in units of 100 nanoseconds; 0 means without end. ORB::create_policy makes it
/// from an Any that holds a TimeBase::TimeT.
class QV_ORB_API RelativeRoundtripTimeoutPolicy : public CORBA::Policy {
  public:
    using _ptr_type = RelativeRoundtripTimeoutPolicy*;
    using _var_type = qv_orb::LocalVar<RelativeRoundtripTimeoutPolicy>;

    explicit RelativeRoundtripTimeoutPolicy(TimeBase::TimeT relative_expiry);

    TimeBase::TimeT relative_expiry() const { return relative_expiry_; }
    CORBA::Policy_ptr copy() override;

    static RelativeRoundtripTimeoutPolicy* _nil() { return nullptr; }
    static RelativeRoundtripTimeoutPolicy* _duplicate(RelativeRoundtripTimeoutPolicy* policy);
    static RelativeRoundtripTimeoutPolicy* _narrow(CORBA::Object_ptr object);

  private:
    const TimeBase::TimeT relative_expiry_;
};

}  // namespace Messaging
