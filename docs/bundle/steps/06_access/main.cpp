// An agent that says who may do what.
#include <agent/agentserver.h>
#include <agent/corbabaseagentconfig.h>
#include <agent/persistent_poa.h>
#include <logging/logmgr.h>
#include <signal.h>

#include <cstdlib>
#include <iostream>
#include <thread>

#include "gate.h"
#include "sessions.h"
#include "stations.h"

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
    const PortableServer::ServantBase_var servant = new SessionFactory(top.in());
    const CORBA::Object_var factory = NS_CORBA::get_persistent_ref(top.in(), servant.in(), "factory");
    StationManagerFactory station_manager(stations);
    config.RegisterMgr("Station", &station_manager);

    Gate gate;
    config.SetReqInterceptorImpl(&gate);
    if (!config.RegistEMSFactoryName(factory.in())) {
        std::cerr << "weather_agent: the naming service can't be reached" << std::endl;
        return 1;
    }
    NS_CORBA::AgentServer::Activate();
    std::thread orb([] { NS_CORBA::AgentServer::Run(); });
    std::cout << "ready" << std::endl;

    int signal = 0;
    sigwait(&stop, &signal);
    std::quick_exit(0);  // threads of the ORB still run
}
