// An agent that serves an interface of its own.
#include <agent/agentserver.h>
#include <agent/corbabaseagentconfig.h>
#include <agent/persistent_poa.h>
#include <logging/logmgr.h>
#include <request/request_interceptor_base.h>
#include <signal.h>

#include <cstdlib>
#include <iostream>
#include <thread>

#include "stations.h"

namespace {

/// Lets every request in. Without such an object the library refuses them all.
class OpenGate : public NS_CORBA::RequestInterceptorBase {
  public:
    void BeforeReceiveRequest(PortableInterceptor::ServerRequestInfo*) override {}
    void AfterReceiveRequest(PortableInterceptor::ServerRequestInfo*) override {}
};

}  // namespace

int main() {
    sigset_t stop;  // blocked in every thread, so that sigwait below gets them
    sigemptyset(&stop);
    sigaddset(&stop, SIGINT);
    sigaddset(&stop, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stop, nullptr);

    NS_CORBA::CorbaBaseAgentConfig& config = *NS_CORBA::CorbaBaseAgentConfig::Instance();
    if (!config.Init("weather_agent") || !NS_CORBA::CorbaLogMgr::Instance()->Init()) {
        std::cerr << "weather_agent: can't start" << std::endl;
        return 1;
    }
    Stations stations;
    const PortableServer::POA_var root = config.GetRootPoa();
    const PortableServer::POA_var top = NS_CORBA::get_persistent_poa(root.in(), "M4400");
    const PortableServer::ServantBase_var servant = new StationManager(stations);
    const CORBA::Object_var manager = NS_CORBA::get_persistent_ref(top.in(), servant.in(), "station");
    config.Write_ior("station.ior", manager.in());

    OpenGate gate;
    config.SetReqInterceptorImpl(&gate);
    NS_CORBA::AgentServer::Activate();
    std::thread orb([] { NS_CORBA::AgentServer::Run(); });
    std::cout << "ready" << std::endl;

    int signal = 0;
    sigwait(&stop, &signal);
    std::quick_exit(0);  // threads of the ORB still run
}
