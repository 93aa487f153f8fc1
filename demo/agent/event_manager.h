#pragma once

#include "demo/agent/common_servant.h"
#include "eventManagerS.h"

namespace qv_demo {

/// The manager "Event": events on demand. There is none where the agent sends no events.
class EventManager : public CommonServant<POA_eventManager::EventMgr_I> {
  public:
    using CommonServant::CommonServant;

    void getCapabilities(common::CapabilityList_T_out capabilities) override;
    void raiseEvents(CORBA::ULong count, CORBA::ULong per_second) override;
};

}  // namespace qv_demo
