// How a request ended so far: the exception or the forward that the client will see, or neither.
#pragma once

#include <memory>

#include "qv_orb/portable_interceptor.h"

class omniCallDescriptor;

namespace qv_orb {

/// Belongs to one upcall, on whose stack it lives; only the thread of that upcall uses it. What it takes over
/// it keeps a copy or a reference of, so it needs nothing of the servant or the interceptors any more.
class Outcome {
  public:
    bool successful() const { return exception_ == nullptr && !forwarded_; }
    bool forwarded() const { return forwarded_; }
    const CORBA::Exception* exception() const { return exception_.get(); }
    PortableInterceptor::ReplyStatus status() const { return status_; }
    CORBA::Object_ptr forward() const { return forward_; }

    /// Inside a catch block: takes over what the servant raised. A user exception that the operation does not
    /// declare becomes UNKNOWN, as does anything that is no CORBA exception.
    void TakeFromServant(omniCallDescriptor& call);
    /// Inside a catch block: takes over what an interception point raised. ForwardRequest counts as a forward
    /// only where the standard lets the point raise it.
    void TakeFromInterceptor(bool may_forward);
    /// Raises what the client is to see; returns when the request succeeded.
    void Raise() const;

  private:
    void Set(const CORBA::Exception& exception, PortableInterceptor::ReplyStatus status);
    void SetForward(CORBA::Object_ptr target);
    void SetUnknown(CORBA::ULong minor);

    std::unique_ptr<CORBA::Exception> exception_;
    PortableInterceptor::ReplyStatus status_ = PortableInterceptor::SUCCESSFUL;
    bool forwarded_ = false;
    CORBA::Object_var forward_;
};

}  // namespace qv_orb
