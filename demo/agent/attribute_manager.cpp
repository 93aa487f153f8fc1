#include "demo/agent/attribute_manager.h"

#include "demo/agent/element_mapping.h"
#include "demo/agent/failure.h"

namespace qv_demo {
namespace {

AttributeValue FromUnion(const attributeManager::Value_T& value) {
    switch (value._d()) {
        case attributeManager::VK_TEXT:
            return std::string(value.text());
        case attributeManager::VK_NUMBER:
            return static_cast<std::int32_t>(value.number());
        case attributeManager::VK_FLAG:
            return static_cast<bool>(value.flag());
        default:
            Fail(globaldefs::EXCPT_INVALID_INPUT, "a value of an unknown kind");
    }
}

void ToUnion(attributeManager::Value_T& to, const AttributeValue& from) {
    if (const auto* const text = std::get_if<std::string>(&from)) {
        to.text(text->c_str());
    } else if (const auto* const number = std::get_if<std::int32_t>(&from)) {
        to.number(*number);
    } else {
        to.flag(std::get<bool>(from));
    }
}

AttributeValue FromAny(const CORBA::Any& value) {
    const char* text = nullptr;
    CORBA::Long number = 0;
    CORBA::Boolean flag = false;
    if (value >>= text) {
        return std::string(text);
    }
    if (value >>= number) {
        return static_cast<std::int32_t>(number);
    }
    if (value >>= CORBA::Any::to_boolean(flag)) {
        return static_cast<bool>(flag);
    }
    Fail(globaldefs::EXCPT_INVALID_INPUT, "a value is a string, a long or a boolean");
}

CORBA::Any* ToAny(const AttributeValue& from) {
    CORBA::Any_var any = new CORBA::Any;
    if (const auto* const text = std::get_if<std::string>(&from)) {
        any.inout() <<= text->c_str();
    } else if (const auto* const number = std::get_if<std::int32_t>(&from)) {
        any.inout() <<= static_cast<CORBA::Long>(*number);
    } else {
        any.inout() <<= CORBA::Any::from_boolean(std::get<bool>(from));
    }
    return any._retn();
}

}  // namespace

void AttributeManager::getCapabilities(common::CapabilityList_T_out capabilities) {
    Touch();
    capabilities = CommonCapabilitiesAnd(
        {"setAttributes", "getAttributes", "setAttributeValue", "getAttributeValue", "countElements"});
}

void AttributeManager::Set(const globaldefs::NamingAttributes_T& name,
                           const std::vector<Attribute>& changes) {
    const std::string element = ElementNameOf(name, ems().name);
    Attributes::SetResult result = Attributes::SetResult::kSet;
    if (!ems().inventory.Change(element,
                                [&](Element& changed) { result = changed.attributes.Set(changes); })) {
        Fail(globaldefs::EXCPT_ENTITY_NOT_FOUND, element);
    }
    RequireKept(result, "an attribute", "attributes");
}

void AttributeManager::setAttributes(const globaldefs::NamingAttributes_T& name,
                                     const attributeManager::AttributeList_T& attributes) {
    Touch();
    std::vector<Attribute> changes;
    for (CORBA::ULong i = 0; i < attributes.length(); ++i) {
        changes.emplace_back(attributes[i].name.in(), FromUnion(attributes[i].value));
    }
    Set(name, changes);
}

void AttributeManager::getAttributes(const globaldefs::NamingAttributes_T& name,
                                     attributeManager::AttributeList_T_out attributes) {
    Touch();
    const std::string element = ElementNameOf(name, ems().name);
    attributeManager::AttributeList_T_var list = new attributeManager::AttributeList_T;
    const bool found = ems().inventory.Visit(element, [&](const Element& visited) {
        const auto& all = visited.attributes.all();
        list->length(static_cast<CORBA::ULong>(all.size()));
        CORBA::ULong next = 0;
        for (const auto& [attribute, value] : all) {
            list[next].name = attribute.c_str();
            ToUnion(list[next++].value, value);
        }
    });
    if (!found) {
        Fail(globaldefs::EXCPT_ENTITY_NOT_FOUND, element);
    }
    attributes = list._retn();
}

void AttributeManager::setAttributeValue(const globaldefs::NamingAttributes_T& name, const char* attribute,
                                         const CORBA::Any& value) {
    Touch();
    Set(name, {{attribute, FromAny(value)}});
}

CORBA::Any* AttributeManager::getAttributeValue(const globaldefs::NamingAttributes_T& name,
                                                const char* attribute) {
    Touch();
    const std::string element = ElementNameOf(name, ems().name);
    CORBA::Any_var any;
    const bool found = ems().inventory.Visit(element, [&](const Element& visited) {
        if (const AttributeValue* const value = visited.attributes.Find(attribute)) {
            any = ToAny(*value);
        }
    });
    if (!found) {
        Fail(globaldefs::EXCPT_ENTITY_NOT_FOUND, element);
    }
    if (any.operator->() == nullptr) {
        Fail(globaldefs::EXCPT_ENTITY_NOT_FOUND, "attribute " + std::string(attribute) + " of " + element);
    }
    return any._retn();
}

CORBA::ULong AttributeManager::countElements(managedElement::CommunicationState_T state) {
    Touch();
    CORBA::ULong count = 0;
    ems().inventory.ForRange(0, ems().inventory.size(), [&](const Element& element) {
        count += element.reachable == (state == managedElement::CS_AVAILABLE) ? 1 : 0;
    });
    return count;
}

}  // namespace qv_demo
