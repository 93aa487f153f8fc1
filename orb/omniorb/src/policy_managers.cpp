#include "policy_managers.h"

#include <mutex>
#include <optional>

#include "minor_codes.h"
#include "orb_internals.h"
#include "timeout_units.h"

namespace qv_orb {
namespace {

using Timeout = Messaging::RelativeRoundtripTimeoutPolicy;
using Expiry = std::optional<TimeBase::TimeT>;  // without a value: not overridden

Expiry ExpiryOf(const CORBA::PolicyList& policies) {
    Expiry expiry;
    for (CORBA::ULong i = 0; i < policies.length(); ++i) {
        const CORBA::Policy_ptr policy = policies[i];
        if (CORBA::is_nil(policy)) {
            throw CORBA::BAD_PARAM(0, CORBA::COMPLETED_NO);
        }
        const auto* timeout = dynamic_cast<const Timeout*>(policy);
        if (timeout == nullptr) {
            throw CORBA::NO_PERMISSION(0, CORBA::COMPLETED_NO);
        }
        if (expiry) {
            throw CORBA::BAD_PARAM(kPolicyTypeTwice, CORBA::COMPLETED_NO);
        }
        expiry = timeout->relative_expiry();
    }
    return expiry;
}

bool IsAskedFor(const CORBA::PolicyTypeSeq& types) {
    for (CORBA::ULong i = 0; i < types.length(); ++i) {
        if (types[i] == Messaging::RELATIVE_RT_TIMEOUT_POLICY_TYPE) {
            return true;
        }
    }
    return types.length() == 0;
}

CORBA::PolicyList* ListOf(const Expiry& expiry, const CORBA::PolicyTypeSeq& types) {
    CORBA::PolicyList_var list = new CORBA::PolicyList;
    if (expiry && IsAskedFor(types)) {
        list->length(1);
        list[0] = new Timeout(*expiry);
    }
    return list._retn();
}

// What a list of overrides makes of the former one.
Expiry Merged(const Expiry& former, const CORBA::PolicyList& policies, CORBA::SetOverrideType set_add) {
    const Expiry expiry = ExpiryOf(policies);
    return set_add == CORBA::ADD_OVERRIDE && !expiry ? former : expiry;
}

class OrbPolicyManager final : public virtual CORBA::PolicyManager {
  public:
    OrbPolicyManager() { omniORB::setClientCallTimeout(0); }

    CORBA::PolicyList* get_policy_overrides(const CORBA::PolicyTypeSeq& types) override {
        const std::lock_guard<std::mutex> guard(mutex_);
        return ListOf(expiry_, types);
    }

    void set_policy_overrides(const CORBA::PolicyList& policies, CORBA::SetOverrideType set_add) override {
        const std::lock_guard<std::mutex> guard(mutex_);
        expiry_ = Merged(expiry_, policies, set_add);
        omniORB::setClientCallTimeout(Milliseconds(expiry_.value_or(0)));
    }

  private:
    std::mutex mutex_;
    Expiry expiry_;
};

// The ORB keeps the timeout in its own record of the thread. A thread that is none of the ORB's gets such a
// record, which lasts as long as this object.
struct ThreadOverride {
    omni_thread::ensure_self record;
    Expiry expiry;
};

ThreadOverride& thread_override() {
    thread_local ThreadOverride value;
    return value;
}

class ThreadPolicyManager final : public virtual CORBA::PolicyCurrent {
  public:
    CORBA::PolicyList* get_policy_overrides(const CORBA::PolicyTypeSeq& types) override {
        return ListOf(thread_override().expiry, types);
    }

    void set_policy_overrides(const CORBA::PolicyList& policies, CORBA::SetOverrideType set_add) override {
        Expiry& expiry = thread_override().expiry;
        const Expiry merged = Merged(expiry, policies, set_add);
        // To the ORB 0 means that the thread has no timeout of its own, so that the ORB's would hold for it.
        const CORBA::ULong unbounded = merged ? kLongestMilliseconds : 0;
        const CORBA::ULong milliseconds = Milliseconds(merged.value_or(0));
        omniORB::setClientThreadCallTimeout(milliseconds != 0 ? milliseconds : unbounded);
        expiry = merged;
    }
};

CORBA::Boolean CreatePolicy(omni::omniInterceptors::createPolicy_T::info_T& info) {
    if (info.type != Messaging::RELATIVE_RT_TIMEOUT_POLICY_TYPE) {
        return true;  // the next one's, or the ORB's own
    }
    CORBA::ULongLong expiry = 0;
    if (!(info.value >>= expiry)) {
        throw CORBA::PolicyError(CORBA::BAD_POLICY_TYPE);
    }
    info.policy = new Timeout(expiry);
    return false;
}

}  // namespace

void InstallPolicyManagers(CORBA::ORB_ptr orb) {
    omniORB::getInterceptors()->createPolicy.add(CreatePolicy);
    const CORBA::PolicyManager_var manager = new OrbPolicyManager;
    orb->register_initial_reference("ORBPolicyManager", manager.in());
    const CORBA::PolicyCurrent_var current = new ThreadPolicyManager;
    orb->register_initial_reference("PolicyCurrent", current.in());
}

}  // namespace qv_orb
