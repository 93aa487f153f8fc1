#include "logging/remote_address.h"

#include <string_view>

#include "logging/message_type.h"
#include "logging/thread_address_map.h"
#include "platform/self_util_common.h"
#include "platform/thread_context.h"

namespace NS_CORBA {

namespace {

const std::string kUserBegin = "<USERNAME_TAG>";
const std::string kUserEnd = "</USERNAME_TAG>";
const std::string kAddressBegin = "<IPANDPORT_TAG>";
const std::string kAddressEnd = "</IPANDPORT_TAG>";

std::string Tagged(const std::string& user, const std::string& address) {
    return kUserBegin + user + kUserEnd + kAddressBegin + address + kAddressEnd;
}

/// POAs that stand in every tree and name no client.
bool IsCommonPoa(std::string_view name) {
    return name == "M4400" || name == "iterator" || name == "session" || name == "RootPOA";
}

std::string AddressOfPoa(const std::string& name) {
    NS_UTIL::SelfUtilCommon* const util = NS_UTIL::SelfUtilCommon::Instance();
    const std::string user =
        util->GetValByTag(name, kUserBegin, kUserEnd, static_cast<int>(kUserBegin.size()));
    const std::string address =
        util->GetValByTag(name, kAddressBegin, kAddressEnd, static_cast<int>(kAddressBegin.size()));
    return Tagged(user, address);
}

/// From "[user][address]", which may have other text around the brackets.
std::string AddressOfThreadContext() {
    const std::string info = NS_UTIL::ThreadContextMgr::Instance()->GetThreadContext().GetUserInfo();
    std::size_t brackets[4];
    std::size_t from = 0;
    const char kinds[] = {'[', ']', '[', ']'};
    for (int i = 0; i < 4; ++i) {
        brackets[i] = info.find(kinds[i], from);
        if (brackets[i] == std::string::npos) {
            return "";
        }
        from = brackets[i];
    }
    const std::string user = info.substr(brackets[0] + 1, brackets[1] - brackets[0] - 1);
    const std::string address = info.substr(brackets[2] + 1, brackets[3] - brackets[2] - 1);
    return user.empty() || address.empty() ? "" : Tagged(user, address);
}

std::string AddressOfRequest(const CORBA::StringSeq& poas) {
    std::string address;
    for (CORBA::ULong i = 0; i < poas.length(); ++i) {
        const char* const name = poas[i];
        if (!IsCommonPoa(name)) {
            address = AddressOfPoa(name);
            break;
        }
    }
    return address.empty() ? AddressOfThreadContext() : address;
}

CORBA::StringSeq* AdapterName(PortableInterceptor::ServerRequestInfo* info) {
    try {
        return info->adapter_name();
    } catch (const CORBA::Exception&) {
        return nullptr;
    }
}

}  // namespace

bool CallerAddress(PortableInterceptor::ServerRequestInfo* info, std::string& address) {
    const CORBA::StringSeq_var poas = AdapterName(info);
    if (!poas.operator->()) {
        return false;
    }
    address = AddressOfRequest(poas.in());
    return true;
}

std::string RemoteAddress(PortableInterceptor::ServerRequestInfo* info, unsigned char messageType,
                          int thread) {
    if (messageType == kRequestMessage) {
        std::string address;
        if (CallerAddress(info, address)) {
            g_ThreadAddressMap.Set(thread, address);
        }
        return address;
    }
    const CORBA::StringSeq_var poas = AdapterName(info);
    if (!poas.operator->()) {
        return "";
    }
    switch (messageType) {
        case kReplyMessage:
        case kExceptionMessage:
            return g_ThreadAddressMap.Take(thread);
        default:
            return "OTHER UNKNOW ADDRESS";
    }
}

}  // namespace NS_CORBA
