// orb/object_access.h for a real TAO.
#include "orb/object_access.h"

#include <tao/IORTable/IORTable.h>
#include <tao/Profile.h>
#include <tao/Stub.h>

namespace qv_orb {

CORBA::Object_ptr PublishUnderKey(CORBA::ORB_ptr orb, const std::string& key,
                                  PortableServer::Servant servant) {
    CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
    const PortableServer::POA_var root = PortableServer::POA::_narrow(object.in());
    CORBA::PolicyList policies(2);
    policies.length(2);
    policies[0] = root->create_lifespan_policy(PortableServer::PERSISTENT);
    policies[1] = root->create_id_assignment_policy(PortableServer::USER_ID);
    const PortableServer::POAManager_var manager = root->the_POAManager();
    const PortableServer::POA_var poa = root->create_POA(key.c_str(), manager.in(), policies);
    const PortableServer::ObjectId_var id = PortableServer::string_to_ObjectId(key.c_str());
    poa->activate_object_with_id(id.in(), servant);
    const CORBA::Object_var reference = poa->id_to_reference(id.in());

    object = orb->resolve_initial_references("IORTable");
    const IORTable::Table_var table = IORTable::Table::_narrow(object.in());
    const CORBA::String_var text = orb->object_to_string(reference.in());
    table->rebind(key.c_str(), text.in());
    return CORBA::Object::_duplicate(reference.in());
}

std::string EndpointOf(CORBA::Object_ptr object) {
    if (CORBA::is_nil(object) || object->_stubobj() == nullptr ||
        object->_stubobj()->profile_in_use() == nullptr) {
        return "";
    }
    char address[256];
    if (object->_stubobj()->profile_in_use()->endpoint()->addr_to_string(address, sizeof address) != 0) {
        return "";
    }
    return address;
}

}  // namespace qv_orb
