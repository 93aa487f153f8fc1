#include "demo/agent/event_manager.h"

#include "demo/agent/event_source.h"
#include "demo/agent/failure.h"

namespace qv_demo {

void EventManager::getCapabilities(common::CapabilityList_T_out capabilities) {
    Touch();
    capabilities = CommonCapabilitiesAnd({"raiseEvents"});
}

void EventManager::raiseEvents(CORBA::ULong count, CORBA::ULong per_second) {
    Touch();
    if (count == 0) {
        Fail(globaldefs::EXCPT_INVALID_INPUT, "count must not be 0");
    }
    if (per_second == 0 || per_second > EventSource::kMostPerSecond) {
        Fail(globaldefs::EXCPT_INVALID_INPUT,
             "perSecond goes from 1 to " + std::to_string(EventSource::kMostPerSecond));
    }
    if (ems().events == nullptr) {
        Fail(globaldefs::EXCPT_NOT_IMPLEMENTED, "this EMS sends no events");
    }
    if (!ems().events->Raise(count, per_second)) {
        Fail(globaldefs::EXCPT_CAPACITY_EXCEEDED,
             "at most " + std::to_string(EventSource::kMostAtOnce) + " events wait to be raised");
    }
}

}  // namespace qv_demo
