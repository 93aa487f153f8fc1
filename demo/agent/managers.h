#pragma once

#include "agent/manager_registry.h"
#include "demo/agent/common_servant.h"
#include "emsMgrS.h"
#include "managedElementManagerS.h"

namespace qv_demo {

/// The manager "EMS": the EMS itself.
class EmsManager : public CommonServant<POA_emsMgr::EMSMgr_I> {
  public:
    using CommonServant::CommonServant;

    void getCapabilities(common::CapabilityList_T_out capabilities) override;
    void getEMS(emsMgr::EMS_T_out info) override;
};

/// The manager "ManagedElement": the network elements.
class ManagedElementManager : public CommonServant<POA_managedElementManager::ManagedElementMgr_I> {
  public:
    using CommonServant::CommonServant;

    void getCapabilities(common::CapabilityList_T_out capabilities) override;
    void getAllManagedElements(CORBA::ULong how_many, managedElement::ManagedElementList_T_out list,
                               managedElement::ManagedElementIterator_I_out iterator) override;
    void getAllManagedElementNames(CORBA::ULong how_many, globaldefs::NamingAttributesList_T_out names,
                                   globaldefs::NamingAttributesIterator_I_out iterator) override;
    void getManagedElement(const globaldefs::NamingAttributes_T& name,
                           managedElement::ManagedElement_T_out element) override;
};

/// Makes a manager of one kind for the session to which an object adapter belongs.
template <class Manager>
class ManagerFactory : public NS_CORBA::MgrFactory {
  public:
    explicit ManagerFactory(const Ems& ems) : ems_(ems) {}

    /// Nil when `session_poa` belongs to no session that is open. Raises CORBA::Exception.
    CORBA::Object* CreateMgr(PortableServer::POA* session_poa) override {
        const auto session = ems_.sessions.Of(session_poa);
        if (!session) {
            return CORBA::Object::_nil();
        }
        PortableServer::ServantBase_var servant = new Manager(ems_, session->id);
        const PortableServer::ObjectId_var id = session_poa->activate_object(servant.in());
        return session_poa->id_to_reference(id.in());
    }

  private:
    const Ems& ems_;
};

}  // namespace qv_demo
