#include "demo/agent/common_servant.h"

#include "demo/agent/element_mapping.h"
#include "demo/agent/failure.h"

namespace qv_demo {
namespace {

[[noreturn]] void NoSuchElement(const std::string& name) {
    Fail(globaldefs::EXCPT_ENTITY_NOT_FOUND, name);
}

[[noreturn]] void FailAsTooLong(const std::string& what) {
    Fail(globaldefs::EXCPT_INVALID_INPUT,
         what + " has at most " + std::to_string(Attributes::kLongestText) + " characters");
}

void RequireShort(const char* what, const std::string& text) {
    if (text.size() > Attributes::kLongestText) {
        FailAsTooLong(what);
    }
}

}  // namespace

void CommonOperations::SetNativeName(const globaldefs::NamingAttributes_T& name,
                                     const char* native_name) const {
    const std::string element = ElementNameOf(name, ems_.name);
    RequireShort("a native name", native_name);
    if (!ems_.inventory.Change(element, [&](Element& changed) { changed.native_name = native_name; })) {
        NoSuchElement(element);
    }
}

void CommonOperations::SetUserLabel(const globaldefs::NamingAttributes_T& name, const char* label,
                                    bool unique) const {
    const std::string element = ElementNameOf(name, ems_.name);
    RequireShort("a user label", label);
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
    RequireShort("an owner", owner);
    if (!ems_.inventory.Change(element, [&](Element& changed) { changed.owner = owner; })) {
        NoSuchElement(element);
    }
}

void CommonOperations::SetAdditionalInfo(const globaldefs::NamingAttributes_T& name,
                                         globaldefs::NVSList_T& info) const {
    const std::string element = ElementNameOf(name, ems_.name);
    const TextPairs changes = FromPairs(info);
    Texts all;
    Attributes::SetResult result = Attributes::SetResult::kSet;
    const bool found = ems_.inventory.Change(element, [&](Element& changed) {
        result = MergeInfo(changed.additional_info, changes);
        all = changed.additional_info;
    });
    if (!found) {
        NoSuchElement(element);
    }
    RequireKept(result, "an entry of additionalInfo", "entries of additionalInfo");
    ToPairs(info, all);
}

std::shared_ptr<const Session> CommonOperations::OwnSession() const {
    auto found = ems_.sessions.Find(session_);
    if (!found) {
        throw CORBA::OBJECT_NOT_EXIST();
    }
    return found;
}

void CommonOperations::RequireKept(Attributes::SetResult result, const std::string& entry,
                                   const std::string& entries) {
    switch (result) {
        case Attributes::SetResult::kSet:
            return;
        case Attributes::SetResult::kBadName:
            Fail(globaldefs::EXCPT_INVALID_INPUT, "the name of " + entry + " has 1 to " +
                                                      std::to_string(Attributes::kLongestName) +
                                                      " characters");
        case Attributes::SetResult::kLongText:
            FailAsTooLong("the text of " + entry);
        case Attributes::SetResult::kTooMany:
            Fail(globaldefs::EXCPT_CAPACITY_EXCEEDED,
                 "an element has at most " + std::to_string(Attributes::kMost) + " " + entries);
    }
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
