// An agent with settings and logs.
#include <agent/agentserver.h>
#include <agent/corbabaseagentconfig.h>
#include <logging/corbalogutil.h>
#include <logging/logmgr.h>

#include <iostream>

int main() {
    NS_CORBA::CorbaBaseAgentConfig& config = *NS_CORBA::CorbaBaseAgentConfig::Instance();
    if (!config.Init("weather_agent")) {
        std::cerr << "weather_agent: the ORB can't be brought up" << std::endl;
        return 1;
    }
    if (!NS_CORBA::CorbaLogMgr::Instance()->Init()) {
        std::cerr << "weather_agent: the logs can't be opened" << std::endl;
        return 1;
    }
    std::string location;
    std::string address;
    config.GetEmsAdditionalInfo(location, address);
    std::cout << config.EmsName() << " (" << location << ") at " << address << ", " << config.GetORBThrdNum()
              << " threads" << std::endl;

    TA_POS;
    NS_CORBA::TaTrace("The weather agent of %s is up.", config.EmsName().c_str());
    TA_POS;
    NS_CORBA::TaDebug(3, "It has nothing to serve yet.");
    TA_POS;
    NS_CORBA::TaDebug(4, "A detail that log_level = 3 leaves out.");

    NS_CORBA::AgentServer::Destroy();
    NS_CORBA::CorbaBaseAgentConfig::Destroy();
    NS_CORBA::CorbaLogMgr::Destroy();
}
