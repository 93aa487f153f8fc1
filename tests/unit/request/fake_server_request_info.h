#pragma once

#include <tao/PI_Server/PI_Server.h>

namespace qv_test {

/// A request that doesn't come from an ORB: it tells its name, its id and its target, or fails to. Everything
/// else raises CORBA::NO_RESOURCES.
class FakeServerRequestInfo : public virtual PortableInterceptor::ServerRequestInfo {
  public:
    const char* operationName = "ping";  ///< null: operation() returns null
    const char* target = "IDL:Test/Gate:1.0";
    CORBA::ULong id = 17;
    bool operationRaises = false;
    int operationCalls = 0;
    int targetCalls = 0;

    /// What operation() raises with `operationRaises` set.
    static CORBA::BAD_INV_ORDER OperationFailure() { return CORBA::BAD_INV_ORDER(14, CORBA::COMPLETED_NO); }

    char* operation() override {
        ++operationCalls;
        if (operationRaises) {
            throw OperationFailure();
        }
        return operationName ? CORBA::string_dup(operationName) : nullptr;
    }
    CORBA::ULong request_id() override { return id; }
    char* target_most_derived_interface() override {
        ++targetCalls;
        return target ? CORBA::string_dup(target) : nullptr;
    }

    Dynamic::ParameterList* arguments() override { throw CORBA::NO_RESOURCES(); }
    Dynamic::ExceptionList* exceptions() override { throw CORBA::NO_RESOURCES(); }
    Dynamic::ContextList* contexts() override { throw CORBA::NO_RESOURCES(); }
    Dynamic::RequestContext* operation_context() override { throw CORBA::NO_RESOURCES(); }
    CORBA::Any* result() override { throw CORBA::NO_RESOURCES(); }
    CORBA::Boolean response_expected() override { throw CORBA::NO_RESOURCES(); }
    Messaging::SyncScope sync_scope() override { throw CORBA::NO_RESOURCES(); }
    PortableInterceptor::ReplyStatus reply_status() override { throw CORBA::NO_RESOURCES(); }
    CORBA::Object_ptr forward_reference() override { throw CORBA::NO_RESOURCES(); }
    CORBA::Any* get_slot(PortableInterceptor::SlotId) override { throw CORBA::NO_RESOURCES(); }
    IOP::ServiceContext* get_request_service_context(IOP::ServiceID) override { throw CORBA::NO_RESOURCES(); }
    IOP::ServiceContext* get_reply_service_context(IOP::ServiceID) override { throw CORBA::NO_RESOURCES(); }
    CORBA::Any* sending_exception() override { throw CORBA::NO_RESOURCES(); }
    char* server_id() override { throw CORBA::NO_RESOURCES(); }
    char* orb_id() override { throw CORBA::NO_RESOURCES(); }
    CORBA::StringSeq* adapter_name() override { throw CORBA::NO_RESOURCES(); }
    CORBA::OctetSeq* object_id() override { throw CORBA::NO_RESOURCES(); }
    CORBA::OctetSeq* adapter_id() override { throw CORBA::NO_RESOURCES(); }
    CORBA::Policy_ptr get_server_policy(CORBA::PolicyType) override { throw CORBA::NO_RESOURCES(); }
    void set_slot(PortableInterceptor::SlotId, const CORBA::Any&) override { throw CORBA::NO_RESOURCES(); }
    CORBA::Boolean target_is_a(const char*) override { throw CORBA::NO_RESOURCES(); }
    void add_reply_service_context(const IOP::ServiceContext&, CORBA::Boolean) override {
        throw CORBA::NO_RESOURCES();
    }
};

}  // namespace qv_test
