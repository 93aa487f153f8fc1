#include "gate.h"

#include <orb/portability.h>

namespace {

thread_local std::string caller_address;  // a request stays on one thread

}  // namespace

void Gate::BeforeReceiveRequest(PortableInterceptor::ServerRequestInfo* info) {
    caller_address = qv_orb::PeerAddress(info);
}

const std::string& CallerAddress() {
    return caller_address;
}
