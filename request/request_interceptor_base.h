#pragma once

#include <tao/PI_Server/PI_Server.h>

#include "platform/export.h"

namespace NS_CORBA {

/// The agent bundle's hooks around each request, at its point receive_request (CORBA 3.0, chapter 21),
/// plugged in with CorbaBaseAgentConfig::SetReqInterceptorImpl.
///
/// Both run on the thread of the request, with no lock of the library held, and for many requests at once. An
/// exception that leaves a hook rejects the request and reaches the client. The library never owns or deletes
/// the object, which must outlive the ORB.
class QV_API RequestInterceptorBase {
  public:
    virtual ~RequestInterceptorBase() = default;

    /// Runs once the request is logged and counted, just before the servant. Called second.
    virtual void AfterReceiveRequest(PortableInterceptor::ServerRequestInfo* info) = 0;

    /// Runs first of all: the place for the bundle's access rules. A request rejected here is neither logged
    /// as a request nor counted.
    virtual void BeforeReceiveRequest(PortableInterceptor::ServerRequestInfo* info) = 0;
};

}  // namespace NS_CORBA
