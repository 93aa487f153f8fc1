// A function of the configuration singleton that stands here, since agent/ knows nothing of suppliers.
#include "agent/corbabaseagentconfig.h"
#include "notification/supplier.h"

namespace NS_CORBA {

void CorbaBaseAgentConfig::ConvertTMFAlarmEventToStr(std::stringstream& out,
                                                     const CosNotification::StructuredEvent& event) {
    SuppilerMgr::Instance()->StructuredEventToStr(out, event);
}

}  // namespace NS_CORBA
