#include "demo/agent/common_servant.h"

#include "demo/agent/element_mapping.h"
#include "demo/agent/failure.h"

namespace qv_demo {
namespace {

[[noreturn]] void NoSuchElement(const std::string& name) {
    Fail(globaldefs::EXCPT_ENTITY_NOT_FOUND, name);
}

}  // namespace

void CommonOperations::SetNativeName(const globaldefs::NamingAttributes_T& name,
                                     const char* native_name) const {
    const std::string element = ElementNameOf(name, ems_.name);
    if (!ems_.inventory.Change(element, [&](Element& changed) { changed.native_name = native_name; })) {
        NoSuchElement(element);
    }
}

void CommonOperations::SetUserLabel(const globaldefs::NamingAttributes_T& name, const char* label,
                                    bool unique) const {
    const std::string element = ElementNameOf(name, ems_.name);
    switch (ems_.inventory.SetUserLabel(element, label, unique)) {
        case Inventory::LabelResult::kSet:
            return;
        case Inventory::LabelResult::kInUse:
            Fail(globaldefs::EXCPT_USERLABEL_IN_USE, label);
        case Inventory::LabelResult::kNotFound:
            NoSuchElement(element);
    }
}

void CommonOperations::SetOwner(const globaldefs::NamingAttributes_T& name, const char* owner) const {
    const std::string element = ElementNameOf(name, ems_.name);
    if (!ems_.inventory.Change(element, [&](Element& changed) { changed.owner = owner; })) {
        NoSuchElement(element);
    }
}

void CommonOperations::SetAdditionalInfo(const globaldefs::NamingAttributes_T& name,
                                         globaldefs::NVSList_T& info) const {
    const std::string element = ElementNameOf(name, ems_.name);
    const TextPairs changes = FromPairs(info);
    TextPairs result;
    const bool found = ems_.inventory.Change(element, [&](Element& changed) {
        MergeInfo(changed.additional_info, changes);
        result = changed.additional_info;
    });
    if (!found) {
        NoSuchElement(element);
    }
    ToPairs(info, result);
}

std::shared_ptr<const Session> CommonOperations::OwnSession() const {
    auto found = ems_.sessions.Find(session_);
    if (!found) {
        throw CORBA::OBJECT_NOT_EXIST();
    }
    return found;
}

common::CapabilityList_T* CommonOperations::CommonCapabilitiesAnd(
    const std::vector<std::string>& operations) {
    std::vector<std::string> all{"setNativeEMSName", "setUserLabel", "setOwner", "setAdditionalInfo",
                                 "getCapabilities"};
    all.insert(all.end(), operations.begin(), operations.end());
    common::CapabilityList_T_var list = new common::CapabilityList_T;
    list->length(static_cast<CORBA::ULong>(all.size()));
    for (CORBA::ULong i = 0; i < list->length(); ++i) {
        list[i].name = all[i].c_str();
        list[i].value = "Supported";
    }
    return list._retn();
}

}  // namespace qv_demo
