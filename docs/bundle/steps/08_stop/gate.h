#pragma once

#include <request/request_interceptor_base.h>

#include <string>

/// The agent's hooks around each request. Thread-safe.
class Gate : public NS_CORBA::RequestInterceptorBase {
  public:
    void BeforeReceiveRequest(PortableInterceptor::ServerRequestInfo* info) override;
    void AfterReceiveRequest(PortableInterceptor::ServerRequestInfo*) override {}
};

/// "host:port" of whoever made the request that this thread serves.
const std::string& CallerAddress();
