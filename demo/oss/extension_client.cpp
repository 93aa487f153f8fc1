#include "demo/oss/extension_client.h"

#include <charconv>
#include <chrono>
#include <cstdint>
#include <optional>
#include <thread>

namespace qv_oss {
namespace {

constexpr const char* kTheEms = "the EMS";
constexpr std::chrono::milliseconds kPause{300};

std::optional<std::int32_t> Number(const std::string& text) {
    std::int32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && rest == end ? std::optional(number) : std::nullopt;
}

std::optional<bool> Flag(const std::string& text) {
    return text == "true" || text == "false" ? std::optional(text == "true") : std::nullopt;
}

CORBA::Any ToAny(const std::string& text) {
    CORBA::Any any;
    if (const auto number = Number(text)) {
        any <<= static_cast<CORBA::Long>(*number);
    } else if (const auto flag = Flag(text)) {
        any <<= CORBA::Any::from_boolean(*flag);
    } else {
        any <<= text.c_str();
    }
    return any;
}

void ToUnion(attributeManager::Value_T& to, const std::string& text) {
    if (const auto number = Number(text)) {
        to.number(*number);
    } else if (const auto flag = Flag(text)) {
        to.flag(*flag);
    } else {
        to.text(text.c_str());
    }
}

std::string FromUnion(const attributeManager::Value_T& value) {
    switch (value._d()) {
        case attributeManager::VK_TEXT:
            return value.text();
        case attributeManager::VK_NUMBER:
            return std::to_string(value.number());
        case attributeManager::VK_FLAG:
            return value.flag() ? "true" : "false";
        default:
            return "(a kind of value that this OSS doesn't know)";
    }
}

/// A manager that another EMS may well lack.
template <class Manager>
typename Manager::_var_type Narrow(common::Common_I_ptr manager) {
    typename Manager::_var_type narrowed = Manager::_narrow(manager);
    if (CORBA::is_nil(narrowed.in())) {
        throw Problem(kUnexpected, "the EMS's manager is of another kind than expected");
    }
    return narrowed;
}

}  // namespace

void ExtensionClient::ChangePassword(const std::string& user, const std::string& old_password,
                                     const std::string& new_password) const {
    const common::Common_I_var manager = session_.Manager("Account");
    const auto end = std::chrono::steady_clock::now() + caller_.limit();
    caller_.Run(Peer::kSession, kTheEms, [&] {
        const auto account = Narrow<accountManager::AccountMgr_I>(manager.in());
        for (;;) {
            try {
                return account->modifyPassword(user.c_str(), old_password.c_str(), new_password.c_str());
            } catch (const globaldefs::ProcessingFailureException& e) {
                if (e.exceptionType != globaldefs::EXCPT_UNABLE_TO_COMPLY ||
                    std::chrono::steady_clock::now() + kPause >= end) {
                    throw;
                }
            }
            std::this_thread::sleep_for(kPause);
        }
    });
}

attributeManager::AttributeMgr_I_var ExtensionClient::AttributeManager() const {
    const common::Common_I_var manager = session_.Manager("Attribute");
    return caller_.Run(Peer::kSession, kTheEms,
                       [&] { return Narrow<attributeManager::AttributeMgr_I>(manager.in()); });
}

void ExtensionClient::Annotate(const globaldefs::NamingAttributes_T& element,
                               const NameValues& attributes) const {
    const auto manager = AttributeManager();
    if (attributes.size() == 1) {
        const CORBA::Any value = ToAny(attributes[0].second);
        caller_.Run(Peer::kSession, kTheEms,
                    [&] { manager->setAttributeValue(element, attributes[0].first.c_str(), value); });
        return;
    }
    attributeManager::AttributeList_T list;
    list.length(static_cast<CORBA::ULong>(attributes.size()));
    for (CORBA::ULong i = 0; i < list.length(); ++i) {
        list[i].name = attributes[i].first.c_str();
        ToUnion(list[i].value, attributes[i].second);
    }
    caller_.Run(Peer::kSession, kTheEms, [&] { manager->setAttributes(element, list); });
}

NameValues ExtensionClient::Attributes(const globaldefs::NamingAttributes_T& element) const {
    const auto manager = AttributeManager();
    return caller_.Run(Peer::kSession, kTheEms, [&] {
        attributeManager::AttributeList_T_var list;
        manager->getAttributes(element, list.out());
        NameValues result;
        for (CORBA::ULong i = 0; i < list->length(); ++i) {
            result.emplace_back(list[i].name.in(), FromUnion(list[i].value));
        }
        return result;
    });
}

void ExtensionClient::RaiseEvents(unsigned count, unsigned per_second) const {
    const common::Common_I_var manager = session_.Manager("Event");
    caller_.Run(Peer::kSession, kTheEms,
                [&] { Narrow<eventManager::EventMgr_I>(manager.in())->raiseEvents(count, per_second); });
}

unsigned ExtensionClient::CountElements(managedElement::CommunicationState_T state) const {
    const auto manager = AttributeManager();
    return caller_.Run(Peer::kSession, kTheEms, [&] { return manager->countElements(state); });
}

}  // namespace qv_oss
