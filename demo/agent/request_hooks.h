#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "demo/agent/core/clock.h"
#include "demo/agent/core/refusal_reports.h"
#include "request/request_interceptor_base.h"

namespace qv_demo {

/// The agent's hooks around each request: they say who asks for what (task_context.h), turn away an OSS whose
/// address the access list doesn't hold, and count those let in. What these may do follows from the objects
/// that a login gives them. Calls from this process always pass. Thread-safe.
class RequestHooks : public NS_CORBA::RequestInterceptorBase {
  public:
    explicit RequestHooks(Clock clock) : refusals_(std::move(clock)) {}

    void AfterReceiveRequest(PortableInterceptor::ServerRequestInfo* info) override;

    /// Raises CORBA::NO_PERMISSION.
    void BeforeReceiveRequest(PortableInterceptor::ServerRequestInfo* info) override;

    /// How many requests were let in so far.
    std::uint64_t requests() const { return requests_; }

  private:
    void Report(const std::string& host);

    std::atomic<std::uint64_t> requests_{0};
    RefusalReports refusals_;
};

}  // namespace qv_demo
