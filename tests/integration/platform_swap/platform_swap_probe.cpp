// Shows what the library makes of the platform below it: the EMS name out of the configuration store, the
// arguments of the ORB, which hold an id and the node's address, and one line for the system log.
#include <iostream>

#include "agent/corbabaseagentconfig.h"
#include "logging/corbalogutil.h"
#include "logging/logmgr.h"

int main() {
    NS_CORBA::CorbaBaseAgentConfig* const config = NS_CORBA::CorbaBaseAgentConfig::Instance();
    if (!config->CorbaBaseAgentReConfig()) {
        std::cerr << "the arguments of the ORB can't be made\n";
        return 1;
    }
    std::cout << "ems " << config->EmsName() << "\n";
    for (int i = 0; i < config->GetArgc(); ++i) {
        std::cout << "arg " << config->GetArgv()[i] << "\n";
    }
    const bool logs = NS_CORBA::CorbaLogMgr::Instance()->Init();
    std::cout << "logs " << logs << std::endl;
    NS_CORBA::TaTrace("a line for the log");
    NS_CORBA::TaWriteOperLog(nullptr, 0);  // asks for the call chain, whatever the logs are set to
    NS_CORBA::CorbaLogMgr::Destroy();
    NS_CORBA::CorbaBaseAgentConfig::Destroy();
    return 0;
}
