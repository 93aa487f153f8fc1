#include "demo/agent/element_mapping.h"

#include "demo/agent/failure.h"

namespace qv_demo {
namespace {

constexpr const char* kEms = "EMS";
constexpr const char* kManagedElement = "ManagedElement";

void SetPair(globaldefs::NameAndStringValue_T& pair, const std::string& name, const std::string& value) {
    pair.name = name.c_str();
    pair.value = value.c_str();
}

std::string Readable(const globaldefs::NamingAttributes_T& name) {
    std::string text;
    for (CORBA::ULong i = 0; i < name.length(); ++i) {
        text += (i == 0 ? "" : "/") + std::string(name[i].name.in()) + "=" + name[i].value.in();
    }
    return text;
}

}  // namespace

void SetEmsName(globaldefs::NamingAttributes_T& name, const std::string& ems) {
    name.length(1);
    SetPair(name[0], kEms, ems);
}

void SetElementName(globaldefs::NamingAttributes_T& name, const std::string& ems,
                    const std::string& element) {
    name.length(2);
    SetPair(name[0], kEms, ems);
    SetPair(name[1], kManagedElement, element);
}

std::string ElementNameOf(const globaldefs::NamingAttributes_T& name, const std::string& ems) {
    if (name.length() != 2 || std::string(kEms) != name[0].name.in() ||
        std::string(kManagedElement) != name[1].name.in()) {
        Fail(globaldefs::EXCPT_INVALID_INPUT, Readable(name));
    }
    if (ems != name[0].value.in()) {
        Fail(globaldefs::EXCPT_ENTITY_NOT_FOUND, Readable(name));
    }
    return name[1].value.in();
}

void ToPairs(globaldefs::NVSList_T& list, const Texts& pairs) {
    list.length(static_cast<CORBA::ULong>(pairs.size()));
    CORBA::ULong next = 0;
    for (const auto& [name, value] : pairs) {
        SetPair(list[next++], name, value);
    }
}

TextPairs FromPairs(const globaldefs::NVSList_T& list) {
    TextPairs pairs;
    for (CORBA::ULong i = 0; i < list.length(); ++i) {
        pairs.emplace_back(list[i].name.in(), list[i].value.in());
    }
    return pairs;
}

void ToManagedElement(managedElement::ManagedElement_T& to, const std::string& ems, const Element& from) {
    SetElementName(to.name, ems, from.name);
    to.userLabel = from.user_label.c_str();
    to.nativeEMSName = from.native_name.c_str();
    to.owner = from.owner.c_str();
    to.location = from.location.c_str();
    to.version = from.version.c_str();
    to.productName = from.product.c_str();
    to.communicationState = from.reachable ? managedElement::CS_AVAILABLE : managedElement::CS_UNAVAILABLE;
    to.emsInSyncState = from.in_sync;
    to.supportedRates.length(static_cast<CORBA::ULong>(from.rates.size()));
    for (CORBA::ULong i = 0; i < to.supportedRates.length(); ++i) {
        to.supportedRates[i] = from.rates[i];
    }
    ToPairs(to.additionalInfo, from.additional_info);
}

}  // namespace qv_demo
