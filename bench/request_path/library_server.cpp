// The servant behind the library: its start, its interceptor with hooks plugged in, its settings. The
// statistics are on or off as the configuration file of QV_AGENT_CONFIG says.
#include <iostream>

#include "agent/agentserver.h"
#include "agent/corbabaseagentconfig.h"
#include "logging/logmgr.h"
#include "request/request_interceptor_base.h"
#include "request_pathS.h"
#include "target_servant.h"

namespace {

class EmptyHooks : public NS_CORBA::RequestInterceptorBase {
  public:
    void AfterReceiveRequest(PortableInterceptor::ServerRequestInfo*) override {}
    void BeforeReceiveRequest(PortableInterceptor::ServerRequestInfo*) override {}
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: bench_library_server FILE\n";
        return 2;
    }
    auto* config = NS_CORBA::CorbaBaseAgentConfig::Instance();
    if (!config->Init("bench_bundle")) {
        std::cerr << "bench_library_server: the library could not be initialised\n";
        return 1;
    }
    NS_CORBA::CorbaLogMgr::Instance()->Init();
    EmptyHooks hooks;
    config->SetReqInterceptorImpl(&hooks);
    CORBA::ORB_var orb = config->GetOrb();
    PortableServer::POA_var poa = config->GetRootPoa();
    TargetServant servant(orb);
    Publish(orb, poa, servant, argv[1]);
    NS_CORBA::AgentServer::Activate();
    NS_CORBA::AgentServer::Run();
    NS_CORBA::AgentServer::Destroy();
    return 0;
}
