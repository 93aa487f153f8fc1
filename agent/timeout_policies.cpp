#include <tao/AnyTypeCode/Any.h>
#include <tao/Messaging/Messaging.h>
#include <tao/Policy_CurrentC.h>
#include <tao/Policy_ManagerC.h>
#include <tao/TimeBaseC.h>

#include <string>

#include "agent/corbabaseagentconfig.h"
#include "logging/corbalogutil.h"
#include "orb/portability.h"

namespace NS_CORBA {

namespace {

constexpr int kFailureLevel = 1;
constexpr int kTraceLevel = 3;
constexpr unsigned long kOneDay = 864000000000;  // in units of 100 nanoseconds

// The policy alone in a list. Whoever sets it destroys it.
void MakePolicy(CORBA::ORB_ptr orb, unsigned long timeout, CORBA::PolicyList& list) {
    CORBA::Any value;
    value <<= static_cast<TimeBase::TimeT>(timeout);
    list.length(1);
    list[0] = orb->create_policy(Messaging::RELATIVE_RT_TIMEOUT_POLICY_TYPE, value);
}

std::string TimeoutText(unsigned long timeout) {
    return "ullTimeOut=" + std::to_string(timeout);
}

}  // namespace

bool CorbaBaseAgentConfig::SetORBTimeOutPolicy(TAO_Pseudo_Var_T<CORBA::ORB>& orb,
                                               const unsigned long& ullTimeOut) {
    const FuncGuardTrace trace("CorbaBaseAgentConfig::SetORBTimeOutPolicy");
    if (CORBA::is_nil(orb.in())) {
        TA_POS;
        TaDebug(kFailureLevel, "[CorbaBaseAgentConfig::SetORBTimeOutPolicy] input orb is null");
        return false;
    }
    try {
        TA_POS;
        TaDebugWithPara(kTraceLevel, "[CorbaBaseAgentConfig::SetORBTimeOutPolicy] Time out info - %s",
                        TimeoutText(ullTimeOut).c_str());
        CORBA::Object_var object = orb->resolve_initial_references("ORBPolicyManager");
        if (CORBA::is_nil(object.in())) {
            TA_POS;
            TaDebug(kFailureLevel,
                    "[CorbaBaseAgentConfig::SetORBTimeOutPolicy] Get ORBPolicyManager object is null");
            return false;
        }
        CORBA::PolicyManager_var manager = CORBA::PolicyManager::_narrow(object.in());
        if (CORBA::is_nil(manager.in())) {
            TA_POS;
            TaTrace("[CorbaBaseAgentConfig::SetORBTimeOutPolicy] Get ORBPolicyManager object of ORB failed!");
            return false;
        }
        CORBA::PolicyList list;
        MakePolicy(orb.in(), ullTimeOut, list);
        manager->set_policy_overrides(list, CORBA::SET_OVERRIDE);
        list[0]->destroy();
        return true;
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaDebugWithPara(kFailureLevel, "[CorbaBaseAgentConfig::SetORBTimeOutPolicy] catch exception<%s>",
                        qv_orb::ExceptionText(ex).c_str());
        return false;
    }
}

bool CorbaBaseAgentConfig::SetCurrentThreadTimeOutPolicy(TAO_Pseudo_Var_T<CORBA::ORB>& orb,
                                                         const unsigned long& ullTimeOut) {
    const FuncGuardTrace trace("CorbaBaseAgentConfig::SetCurrentThreadTimeOutPolicy");
    if (CORBA::is_nil(orb.in())) {
        TA_POS;
        TaDebug(kFailureLevel, "[CorbaBaseAgentConfig::SetCurrentThreadTimeOutPolicy] input orb is null");
        return false;
    }
    try {
        TA_POS;
        TaDebugWithPara(kTraceLevel,
                        "[CorbaBaseAgentConfig::SetCurrentThreadTimeOutPolicy] Time out info - %s",
                        TimeoutText(ullTimeOut).c_str());
        CORBA::PolicyList list;
        MakePolicy(orb.in(), ullTimeOut, list);
        CORBA::Object_var object = orb->resolve_initial_references("PolicyCurrent");
        if (CORBA::is_nil(object.in())) {
            TA_POS;
            TaDebug(kFailureLevel,
                    "[CorbaBaseAgentConfig::SetCurrentThreadTimeOutPolicy] Get PolicyCurrent object is null");
            return false;
        }
        CORBA::PolicyCurrent_var current = CORBA::PolicyCurrent::_narrow(object.in());
        if (CORBA::is_nil(current.in())) {
            TA_POS;
            TaDebug(
                kFailureLevel,
                "[CorbaBaseAgentConfig::SetCurrentThreadTimeOutPolicy] Get PolicyCurrent object of current "
                "thread failed!");
            return false;
        }
        current->set_policy_overrides(list, CORBA::SET_OVERRIDE);
        list[0]->destroy();
        return true;
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaDebugWithPara(kFailureLevel,
                        "[CorbaBaseAgentConfig::SetCurrentThreadTimeOutPolicy] catch exception<%s>",
                        qv_orb::ExceptionText(ex).c_str());
        return false;
    }
}

unsigned long CorbaBaseAgentConfig::GetMaxNanoSecondForTimeOut() {
    return kOneDay;
}

}  // namespace NS_CORBA
