#include "demo/agent/request_hooks.h"

#include "orb/portability.h"

namespace qv_demo {
namespace {

// A request stays on one thread from the hooks to the end of the servant.
thread_local std::string caller_address;

}  // namespace

void RequestHooks::BeforeReceiveRequest(PortableInterceptor::ServerRequestInfo* info) {
    caller_address = qv_orb::PeerAddress(info);
    ++requests_;
}

void RequestHooks::AfterReceiveRequest(PortableInterceptor::ServerRequestInfo*) {}

const std::string& CallerAddress() {
    return caller_address;
}

}  // namespace qv_demo
