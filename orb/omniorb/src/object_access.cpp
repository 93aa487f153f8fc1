#include "orb/object_access.h"

#include "orb_internals.h"

#include <omniORB4/giopEndpoint.h>

namespace qv_orb {

CORBA::Object_ptr PublishUnderKey(CORBA::ORB_ptr orb, const std::string& key,
                                  PortableServer::Servant servant) {
    const CORBA::Object_var object = orb->resolve_initial_references("omniINSPOA");
    const PortableServer::POA_var poa = PortableServer::POA::_narrow(object.in());
    const PortableServer::ObjectId_var id = PortableServer::string_to_ObjectId(key.c_str());
    poa->activate_object_with_id(id.in(), servant);
    const PortableServer::POAManager_var manager = poa->the_POAManager();
    manager->activate();
    return poa->id_to_reference(id.in());
}

std::string EndpointOf(CORBA::Object_ptr object) {
    if (CORBA::is_nil(object) || object->_PR_getobj() == nullptr) {
        return "";
    }
    const omniIOR_var ior = object->_PR_getobj()->_getIOR();
    omni::giopAddressList& addresses = ior->getIORInfo()->addresses();
    if (addresses.empty()) {
        return "";
    }
    const std::string address = addresses.front()->address();  // giop:tcp:host:port
    const std::size_t transport = address.find(':', address.find(':') + 1);
    return transport == std::string::npos ? address : address.substr(transport + 1);
}

}  // namespace qv_orb
