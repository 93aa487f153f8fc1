#pragma once

#include <tao/PI_Server/PI_Server.h>

#include <string>

namespace qv_demo {

/// Says on the calling thread who asks for what, until the request has ended: the platform's thread context
/// becomes "[user][address]" and "Interface/operation", by which records and spans name the request.
/// `address` is "host:port"; empty for a call from this process.
void BeginTask(PortableInterceptor::ServerRequestInfo* info, const std::string& address);

/// The address of the running task; empty when there is none.
std::string CallerAddress();

/// To be called before the ORB is initialised: from then on a task ends with its request, however that ended,
/// and a request that this process made of itself meanwhile leaves the outer one as it was. The library's
/// hooks have no such moment; an interceptor that is registered ahead of the library's is the last to see a
/// request.
void RegisterTaskContext();

}  // namespace qv_demo
