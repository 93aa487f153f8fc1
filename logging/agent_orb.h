#pragma once

#include <tao/ORB.h>

#include "agent/corbabaseagentconfig.h"

namespace NS_CORBA {

/// The agent's ORB with a reference for the caller, nil when there is none. Any thread may ask.
inline CORBA::ORB_ptr AgentOrb() {
    CorbaBaseAgentConfig* const config = CorbaBaseAgentConfig::Instance();
    return config ? config->GetOrb() : CORBA::ORB::_nil();
}

}  // namespace NS_CORBA
