#include "agent/persistent_poa.h"

#include "logging/corbalogutil.h"

namespace NS_CORBA {

namespace {

CORBA::Object* ReferenceOfActive(PortableServer::POA* poa, const PortableServer::ObjectId& oid) {
    try {
        return poa->id_to_reference(oid);
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(ex, "Raised during id_to_reference!");
        return CORBA::Object::_nil();
    }
}

}  // namespace

PortableServer::POA* get_persistent_poa(PortableServer::POA* parent, const char* name) {
    FuncGuardTrace trace("get_persistent_poa");
    try {
        PortableServer::POAManager_var manager = parent->the_POAManager();
        CORBA::PolicyList policies(3);
        policies.length(3);
        policies[0] = parent->create_lifespan_policy(PortableServer::PERSISTENT);
        policies[1] = parent->create_servant_retention_policy(PortableServer::RETAIN);
        policies[2] = parent->create_id_assignment_policy(PortableServer::USER_ID);
        try {
            return parent->create_POA(name, manager.in(), policies);
        } catch (PortableServer::POA::AdapterAlreadyExists&) {
            TA_POS;
            TaTrace(
                "Exception<PortableServer::POA::AdapterAlreadyExists> raised during get_persistent_poa: %s!",
                name);
            return parent->find_POA(name, false);  // raises when the child has gone meanwhile
        }
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(ex, "Raised during get_persistent_poa!");
        return PortableServer::POA::_nil();
    }
}

CORBA::Object* get_persistent_ref(PortableServer::POA* poa, TAO_ServantBase* servant, const char* id) {
    FuncGuardTrace trace("get_persistent_ref");
    try {
        PortableServer::ObjectId_var oid = PortableServer::string_to_ObjectId(id);
        try {
            poa->activate_object_with_id(oid.in(), servant);
        } catch (PortableServer::POA::ServantAlreadyActive&) {
            return ReferenceOfActive(poa, oid.in());
        } catch (PortableServer::POA::ObjectAlreadyActive&) {
            return ReferenceOfActive(poa, oid.in());
        }
        return poa->id_to_reference(oid.in());
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(ex, "Raised during get_persistent_ref!");
        return CORBA::Object::_nil();
    }
}

}  // namespace NS_CORBA
