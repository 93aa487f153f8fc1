#include "demo/agent/managers.h"

#include "agent/corbabaseagentconfig.h"
#include "demo/agent/element_mapping.h"
#include "demo/agent/failure.h"
#include "demo/agent/page_iterator.h"

namespace qv_demo {
void EmsManager::getCapabilities(common::CapabilityList_T_out capabilities) {
    Touch();
    capabilities = CommonCapabilitiesAnd({"getEMS"});
}

void EmsManager::getEMS(emsMgr::EMS_T_out info) {
    Touch();
    std::string location;
    std::string address;
    NS_CORBA::CorbaBaseAgentConfig::Instance()->GetEmsAdditionalInfo(location, address);
    const EmsInfo& own = ems().inventory.ems();
    emsMgr::EMS_T_var result = new emsMgr::EMS_T;
    SetEmsName(result->name, ems().name);
    result->userLabel = own.user_label.c_str();
    result->nativeEMSName = ems().name.c_str();
    result->owner = own.owner.c_str();
    result->emsVersion = own.version.c_str();
    result->type = own.type.c_str();
    ToPairs(result->additionalInfo, {{"Location", location}, {"Address", address}});
    info = result._retn();
}

void ManagedElementManager::getCapabilities(common::CapabilityList_T_out capabilities) {
    Touch();
    capabilities =
        CommonCapabilitiesAnd({"getAllManagedElements", "getAllManagedElementNames", "getManagedElement"});
}

void ManagedElementManager::getAllManagedElements(CORBA::ULong how_many,
                                                  managedElement::ManagedElementList_T_out list,
                                                  managedElement::ManagedElementIterator_I_out iterator) {
    Touch();
    FirstPage<ElementPages>(ems(), *OwnSession(), how_many, list, iterator);
}

void ManagedElementManager::getAllManagedElementNames(CORBA::ULong how_many,
                                                      globaldefs::NamingAttributesList_T_out names,
                                                      globaldefs::NamingAttributesIterator_I_out iterator) {
    Touch();
    FirstPage<NamePages>(ems(), *OwnSession(), how_many, names, iterator);
}

void ManagedElementManager::getManagedElement(const globaldefs::NamingAttributes_T& name,
                                              managedElement::ManagedElement_T_out element) {
    Touch();
    const std::string own_name = ElementNameOf(name, ems().name);
    managedElement::ManagedElement_T_var result = new managedElement::ManagedElement_T;
    if (!ems().inventory.Visit(
            own_name, [&](const Element& found) { ToManagedElement(result.inout(), ems().name, found); })) {
        Fail(globaldefs::EXCPT_ENTITY_NOT_FOUND, own_name);
    }
    element = result._retn();
}

}  // namespace qv_demo
