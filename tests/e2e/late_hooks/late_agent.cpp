// An agent that serves requests and plugs its hooks in when it gets SIGUSR1. Its session factory lets nobody
// in. Usage: late_agent IOR_FILE
#include <pthread.h>
#include <signal.h>

#include <cstdlib>
#include <iostream>
#include <thread>

#include "agent/agentserver.h"
#include "agent/corbabaseagentconfig.h"
#include "agent/persistent_poa.h"
#include "emsSessionFactoryS.h"
#include "logging/logmgr.h"
#include "tests/support/open_hooks.h"

namespace {

class ClosedFactory : public POA_emsSessionFactory::EmsSessionFactory_I {
  public:
    char* getVersion() override { return CORBA::string_dup("2.0"); }
    void getEmsSession(const char*, const char*, nmsSession::NmsSession_I_ptr,
                       emsSession::EmsSession_I_out) override {
        throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_ACCESS_DENIED, "closed today");
    }
};

}  // namespace

int main(int argc, char** argv) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    NS_CORBA::CorbaBaseAgentConfig& config = *NS_CORBA::CorbaBaseAgentConfig::Instance();
    if (argc != 2 || !config.Init("late_agent") || !NS_CORBA::CorbaLogMgr::Instance()->Init()) {
        std::cerr << "late_agent can't start" << std::endl;
        return 1;
    }
    const PortableServer::POA_var root = config.GetRootPoa();
    const PortableServer::POA_var poa = NS_CORBA::get_persistent_poa(root.in(), "M4400");
    PortableServer::ServantBase_var servant = new ClosedFactory;
    const CORBA::Object_var factory = NS_CORBA::get_persistent_ref(poa.in(), servant.in(), "factory");
    if (config.Write_ior(argv[1], factory.in()) != 0 || NS_CORBA::AgentServer::Activate() != 0) {
        std::cerr << "late_agent can't serve" << std::endl;
        return 1;
    }
    std::thread([] { NS_CORBA::AgentServer::Run(); }).detach();
    std::cout << "serving without hooks" << std::endl;

    int number = 0;
    sigwait(&signals, &number);
    static qv_test::OpenHooks hooks;
    config.SetReqInterceptorImpl(&hooks);
    std::cout << "plugged in" << std::endl;
    sigwait(&signals, &number);
    std::_Exit(0);
}
