// PortableInterceptor::ORBInitializer, ORBInitInfo and Current (CORBA 3.0, 21.4 and 21.7).
#pragma once

#include "qv_orb/interceptor.h"

namespace PortableInterceptor {

class ORBInitInfo;
class ORBInitializer;
class Current;
using ORBInitInfo_ptr = ORBInitInfo*;
using ORBInitializer_ptr = ORBInitializer*;
using ORBInitializer_var = qv_orb::LocalVar<ORBInitializer>;
using Current_ptr = Current*;
using Current_var = qv_orb::LocalVar<Current>;

/// The slots of the calling thread. Within an upcall and its interception points they are the slots of the
/// request.
class QV_ORB_API Current : public virtual qv_orb::CountedLocalObject {
  public:
    QV_ORB_LOCAL_INTERFACE(Current)

    /// A copy of the slot's value, with a TypeCode of kind tk_null while nothing was set. Raises InvalidSlot.
    virtual CORBA::Any* get_slot(SlotId id) = 0;
    /// Raises InvalidSlot.
    virtual void set_slot(SlotId id, const CORBA::Any& data) = 0;
};

/// What an initializer may do while the ORB is made. Afterwards every operation raises OBJECT_NOT_EXIST.
class QV_ORB_API ORBInitInfo : public virtual qv_orb::CountedLocalObject {
  public:
    QV_ORB_LOCAL_INTERFACE(ORBInitInfo)

    using DuplicateName = ORBInitInfo_DuplicateName;
    using InvalidName = ORBInitInfo_InvalidName;

    virtual CORBA::StringSeq* arguments() = 0;
    virtual char* orb_id() = 0;
    /// Raises InvalidName for an empty id or one that is there already.
    virtual void register_initial_reference(const char* id, CORBA::Object_ptr object) = 0;
    /// Only from post_init on; raises InvalidName for an unknown id.
    virtual CORBA::Object_ptr resolve_initial_references(const char* id) = 0;
    /// Raises DuplicateName when an interceptor of that name, not empty, is registered.
    virtual void add_server_request_interceptor(ServerRequestInterceptor_ptr interceptor) = 0;
    virtual void add_client_request_interceptor(Interceptor_ptr interceptor) = 0;
    virtual void add_ior_interceptor(Interceptor_ptr interceptor) = 0;
    virtual SlotId allocate_slot_id() = 0;
};

class QV_ORB_API ORBInitializer : public virtual qv_orb::CountedLocalObject {
  public:
    QV_ORB_LOCAL_INTERFACE(ORBInitializer)

    virtual void pre_init(ORBInitInfo_ptr info) = 0;
    virtual void post_init(ORBInitInfo_ptr info) = 0;
};

/// Has `initializer` called for every ORB that CORBA::ORB_init makes from now on; takes a reference of its
/// own. Raises BAD_PARAM for a nil one. Thread-safe.
QV_ORB_API void register_orb_initializer(ORBInitializer_ptr initializer);

}  // namespace PortableInterceptor
