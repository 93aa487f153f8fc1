// PortableInterceptor::Interceptor and ServerRequestInterceptor (CORBA 3.0, 21.2 and 21.3.9).
#pragma once

#include "qv_orb/local_interface.h"

#include <PortableInterceptorTypes.hh>

namespace PortableInterceptor {

class Interceptor;
class ServerRequestInfo;
class ServerRequestInterceptor;
using Interceptor_ptr = Interceptor*;
using Interceptor_var = qv_orb::LocalVar<Interceptor>;
using ServerRequestInfo_ptr = ServerRequestInfo*;
using ServerRequestInterceptor_ptr = ServerRequestInterceptor*;
using ServerRequestInterceptor_var = qv_orb::LocalVar<ServerRequestInterceptor>;

class QV_ORB_API Interceptor : public virtual qv_orb::CountedLocalObject {
  public:
    QV_ORB_LOCAL_INTERFACE(Interceptor)

    /// The name under which it is registered, as a new string; empty for an anonymous interceptor.
    virtual char* name() = 0;
    /// Called once when the ORB is destroyed; the ORB calls no interception point afterwards.
    virtual void destroy() = 0;
};

/// The interception points of one request run on the thread that runs the servant; those of different
/// requests run at the same time. A starting point that raises a system exception or ForwardRequest rejects
/// the request.
class QV_ORB_API ServerRequestInterceptor : public virtual Interceptor {
  public:
    QV_ORB_LOCAL_INTERFACE(ServerRequestInterceptor)

    virtual void receive_request_service_contexts(ServerRequestInfo_ptr info) = 0;
    virtual void receive_request(ServerRequestInfo_ptr info) = 0;
    virtual void send_reply(ServerRequestInfo_ptr info) = 0;
    virtual void send_exception(ServerRequestInfo_ptr info) = 0;
    virtual void send_other(ServerRequestInfo_ptr info) = 0;
};

}  // namespace PortableInterceptor
