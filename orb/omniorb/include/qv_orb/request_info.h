// PortableInterceptor::RequestInfo and ServerRequestInfo (CORBA 3.0, 21.3.12 and 21.3.14).
#pragma once

#include "qv_orb/interceptor.h"

#include <Dynamic.hh>

namespace Messaging {
/// How far a oneway request was waited for (CORBA 3.0, 22.2).
using SyncScope = CORBA::Short;
constexpr SyncScope SYNC_NONE = 0;
constexpr SyncScope SYNC_WITH_TRANSPORT = 1;
constexpr SyncScope SYNC_WITH_SERVER = 2;
constexpr SyncScope SYNC_WITH_TARGET = 3;
}  // namespace Messaging

namespace PortableInterceptor {

/// One request, valid while its interception points and its servant run, on their thread only. An attribute
/// that is not valid at the calling point raises BAD_INV_ORDER with minor code 14; one that this ORB cannot
/// supply raises NO_RESOURCES with minor code 1. Results are the caller's to release.
class QV_ORB_API RequestInfo : public virtual CORBA::LocalObject {
  public:
    QV_ORB_LOCAL_INTERFACE(RequestInfo)

    virtual CORBA::ULong request_id() = 0;
    virtual char* operation() = 0;
    virtual Dynamic::ParameterList* arguments() = 0;
    virtual Dynamic::ExceptionList* exceptions() = 0;
    virtual Dynamic::ContextList* contexts() = 0;
    virtual Dynamic::RequestContext* operation_context() = 0;
    virtual CORBA::Any* result() = 0;
    virtual CORBA::Boolean response_expected() = 0;
    virtual Messaging::SyncScope sync_scope() = 0;
    virtual ReplyStatus reply_status() = 0;
    virtual CORBA::Object_ptr forward_reference() = 0;
    virtual CORBA::Any* get_slot(SlotId id) = 0;
    virtual IOP::ServiceContext* get_request_service_context(IOP::ServiceID id) = 0;
    virtual IOP::ServiceContext* get_reply_service_context(IOP::ServiceID id) = 0;

  protected:
    RequestInfo();
};

class QV_ORB_API ServerRequestInfo : public virtual RequestInfo {
  public:
    QV_ORB_LOCAL_INTERFACE(ServerRequestInfo)

    virtual CORBA::Any* sending_exception() = 0;
    virtual char* server_id() = 0;
    virtual char* orb_id() = 0;
    /// The names of the POAs from the root, "RootPOA", to the one that holds the object.
    virtual CORBA::StringSeq* adapter_name() = 0;
    virtual CORBA::OctetSeq* object_id() = 0;
    virtual CORBA::OctetSeq* adapter_id() = 0;
    virtual char* target_most_derived_interface() = 0;
    virtual CORBA::Policy_ptr get_server_policy(CORBA::PolicyType type) = 0;
    virtual void set_slot(SlotId id, const CORBA::Any& data) = 0;
    virtual CORBA::Boolean target_is_a(const char* id) = 0;
    /// Adds a context to the reply. Raises BAD_INV_ORDER with minor code 15 when one of that id is there and
    /// `replace` is false.
    virtual void add_reply_service_context(const IOP::ServiceContext& context, CORBA::Boolean replace) = 0;
};

}  // namespace PortableInterceptor
