#include "demo/agent/request_hooks.h"

#include "agent/corbabaseagentconfig.h"
#include "demo/agent/console.h"
#include "demo/agent/core/peer_address.h"
#include "demo/agent/task_context.h"
#include "logging/corbalogutil.h"
#include "orb/portability.h"

namespace qv_demo {
void RequestHooks::BeforeReceiveRequest(PortableInterceptor::ServerRequestInfo* info) {
    const std::string address = qv_orb::PeerAddress(info);
    BeginTask(info, address);
    if (!address.empty() && !NS_CORBA::CorbaBaseAgentConfig::Instance()->IsValidOssIP(IPv4Of(address))) {
        Report(HostOf(address));
        throw CORBA::NO_PERMISSION();
    }
    ++requests_;
}

void RequestHooks::Report(const std::string& host) {
    const auto refused = refusals_.Count(host);
    if (!refused) {
        return;
    }
    const std::string line = host +
                             " is not in the access list (oss_addresses): " + std::to_string(*refused) +
                             (*refused == 1 ? " request" : " requests");
    TA_POS;
    NS_CORBA::TaDebugWithPara(1, "[RequestHooks::BeforeReceiveRequest] Refused: %s", line.c_str());
    Say("refused " + line);
}

void RequestHooks::AfterReceiveRequest(PortableInterceptor::ServerRequestInfo*) {}

}  // namespace qv_demo
