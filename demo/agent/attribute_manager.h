#pragma once

#include <string>
#include <vector>

#include "attributeManagerS.h"
#include "demo/agent/common_servant.h"
#include "demo/agent/core/attributes.h"

namespace qv_demo {

/// The manager "Attribute": an OSS's notes about elements, of any type. They last until the agent ends.
class AttributeManager : public CommonServant<POA_attributeManager::AttributeMgr_I> {
  public:
    using CommonServant::CommonServant;

    void getCapabilities(common::CapabilityList_T_out capabilities) override;
    void setAttributes(const globaldefs::NamingAttributes_T& name,
                       const attributeManager::AttributeList_T& attributes) override;
    void getAttributes(const globaldefs::NamingAttributes_T& name,
                       attributeManager::AttributeList_T_out attributes) override;
    void setAttributeValue(const globaldefs::NamingAttributes_T& name, const char* attribute,
                           const CORBA::Any& value) override;
    CORBA::Any* getAttributeValue(const globaldefs::NamingAttributes_T& name, const char* attribute) override;
    CORBA::ULong countElements(managedElement::CommunicationState_T state) override;

  private:
    void Set(const globaldefs::NamingAttributes_T& name, const std::vector<Attribute>& changes);
};

}  // namespace qv_demo
