#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "request/request_interceptor_base.h"

namespace qv_demo {

/// The agent's hooks around each request: they count it, note where it comes from, and let everybody in,
/// since what a caller may do follows from the objects that a login gives it. Thread-safe.
class RequestHooks : public NS_CORBA::RequestInterceptorBase {
  public:
    void AfterReceiveRequest(PortableInterceptor::ServerRequestInfo* info) override;
    void BeforeReceiveRequest(PortableInterceptor::ServerRequestInfo* info) override;

    /// How many requests have come in so far.
    std::uint64_t requests() const { return requests_; }

  private:
    std::atomic<std::uint64_t> requests_{0};
};

/// "host:port" of the caller whose request the calling thread serves; empty for a call from this process.
const std::string& CallerAddress();

}  // namespace qv_demo
