#include "sessions.h"

#include <agent/corbabaseagentconfig.h>
#include <agent/manager_registry.h>
#include <request/corbasecurity.h>

#include "gate.h"

namespace {

NS_CORBA::CorbaSecurityMgr& Security() {
    return *NS_CORBA::CorbaSecurityMgr::Instance();
}

PortableServer::POA_ptr MakeChild(PortableServer::POA_ptr parent, const std::string& name) {
    const PortableServer::POAManager_var manager = parent->the_POAManager();
    return parent->create_POA(name.c_str(), manager.in(), CORBA::PolicyList());
}

}  // namespace

Weather::Manager_ptr Session::getManager(const char* name) {
    NS_CORBA::MgrFactory* const factory = NS_CORBA::CorbaBaseAgentConfig::Instance()->GetNorthMgr(name);
    if (factory == nullptr) {
        throw Weather::Refused("there is no such manager");
    }
    const PortableServer::POA_var poa = client_->find_POA("session", false);
    const CORBA::Object_var manager = factory->CreateMgr(poa.in());
    return Weather::Manager::_narrow(manager.in());
}

CosNotifyChannelAdmin::EventChannel_ptr Session::getEventChannel() {
    throw Weather::Refused("this EMS sends no events");
}

void Session::endSession() {
    Security().Logout(address_, user_);
    client_->destroy(true, false);  // with all that the OSS was given
}

Weather::Session_ptr SessionFactory::getEmsSession(const char* user, const char* password) {
    const std::string address = CallerAddress();
    if (Security().Login(address, user, password) != 0) {
        throw Weather::Refused("user or password is wrong");
    }
    const PortableServer::POA_var client = MakeClientPoa(user, address);
    const PortableServer::POA_var poa = MakeChild(client.in(), "session");
    const PortableServer::ServantBase_var servant = new Session(client.in(), user, address);
    const PortableServer::ObjectId_var id = poa->activate_object(servant.in());
    const CORBA::Object_var session = poa->id_to_reference(id.in());
    return Weather::Session::_narrow(session.in());
}

PortableServer::POA_ptr SessionFactory::MakeClientPoa(const std::string& user, const std::string& address) {
    try {
        return MakeChild(top_.in(), "<USERNAME_TAG>" + user + "</USERNAME_TAG><IPANDPORT_TAG>" + address +
                                        "</IPANDPORT_TAG>");
    } catch (const PortableServer::POA::AdapterAlreadyExists&) {
        Security().Logout(address, user);
        throw Weather::Refused("there is a session already");
    }
}
