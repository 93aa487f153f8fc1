#pragma once

#include "request/request_interceptor_base.h"

namespace qv_test {

/// Hooks that let every request in and do nothing more, for agents whose gate has to be open.
class OpenHooks : public NS_CORBA::RequestInterceptorBase {
  public:
    void AfterReceiveRequest(PortableInterceptor::ServerRequestInfo*) override {}
    void BeforeReceiveRequest(PortableInterceptor::ServerRequestInfo*) override {}
};

}  // namespace qv_test
