#include "gate.h"

#include <agent/corbabaseagentconfig.h>
#include <arpa/inet.h>
#include <orb/portability.h>
#include <request/te_user_helper.h>

#include <cstring>

namespace {

thread_local std::string caller_address;  // a request stays on one thread

/// The IPv4 address of "host:port" as a number; 0 where there is none.
unsigned int IPv4Of(const std::string& address) {
    in_addr number{};
    inet_pton(AF_INET, address.substr(0, address.rfind(':')).c_str(), &number);
    return ntohl(number.s_addr);
}

bool IsCalledBy(const std::string& user) {
    const std::string tagged = "<USERNAME_TAG>" + user + "</USERNAME_TAG>";
    return NS_CORBA::TEUserHelper::GetNmsIPAddrByContext().rfind(tagged, 0) == 0;
}

}  // namespace

void Gate::BeforeReceiveRequest(PortableInterceptor::ServerRequestInfo* info) {
    caller_address = qv_orb::PeerAddress(info);
    if (!NS_CORBA::CorbaBaseAgentConfig::Instance()->IsValidOssIP(IPv4Of(caller_address))) {
        throw CORBA::NO_PERMISSION();
    }
    const CORBA::String_var operation = info->operation();
    if (std::strcmp(operation.in(), "setLimit") == 0 && !IsCalledBy("anna")) {
        throw CORBA::NO_PERMISSION();
    }
}

const std::string& CallerAddress() {
    return caller_address;
}
