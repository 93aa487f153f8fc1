#include "sessions.h"

#include <agent/corbabaseagentconfig.h>
#include <agent/manager_registry.h>

namespace {

/// The POA of the request that this thread serves.
PortableServer::Current_var CurrentRequest() {
    const CORBA::ORB_var orb = NS_CORBA::CorbaBaseAgentConfig::Instance()->GetOrb();
    const CORBA::Object_var object = orb->resolve_initial_references("POACurrent");
    return PortableServer::Current::_narrow(object.in());
}

}  // namespace

Weather::Manager_ptr Session::getManager(const char* name) {
    NS_CORBA::MgrFactory* const factory = NS_CORBA::CorbaBaseAgentConfig::Instance()->GetNorthMgr(name);
    if (factory == nullptr) {
        throw Weather::Refused("there is no such manager");
    }
    const PortableServer::POA_var poa = CurrentRequest()->get_POA();
    const CORBA::Object_var manager = factory->CreateMgr(poa.in());
    return Weather::Manager::_narrow(manager.in());
}

CosNotifyChannelAdmin::EventChannel_ptr Session::getEventChannel() {
    throw Weather::Refused("this EMS sends no events");
}

void Session::endSession() {
    const PortableServer::Current_var current = CurrentRequest();
    const PortableServer::POA_var poa = current->get_POA();
    const PortableServer::ObjectId_var id = current->get_object_id();
    poa->deactivate_object(id.in());
}

Weather::Session_ptr SessionFactory::getEmsSession(const char*, const char*) {
    const PortableServer::ServantBase_var servant = new Session;
    const PortableServer::ObjectId_var id = poa_->activate_object(servant.in());
    const CORBA::Object_var session = poa_->id_to_reference(id.in());
    return Weather::Session::_narrow(session.in());
}
