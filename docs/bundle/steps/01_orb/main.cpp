// The smallest agent: it brings up the ORB and prints a reference to an object of its own.
#include <agent/agentserver.h>
#include <agent/corbabaseagentconfig.h>
#include <agent/persistent_poa.h>

#include <iostream>

int main() {
    NS_CORBA::CorbaBaseAgentConfig& config = *NS_CORBA::CorbaBaseAgentConfig::Instance();
    if (!config.Init("weather_agent")) {
        return 1;
    }
    const PortableServer::POA_var root = config.GetRootPoa();
    const PortableServer::POA_var top = NS_CORBA::get_persistent_poa(root.in(), "M4400");
    const PortableServer::ObjectId_var id = PortableServer::string_to_ObjectId("station");
    const CORBA::Object_var station =
        top->create_reference_with_id(id.in(), "IDL:Weather/StationManager:1.0");
    const CORBA::ORB_var orb = config.GetOrb();
    const CORBA::String_var text = orb->object_to_string(station.in());
    std::cout << text.in() << std::endl;
    NS_CORBA::AgentServer::Destroy();
}
