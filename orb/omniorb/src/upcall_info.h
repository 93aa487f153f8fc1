// The ServerRequestInfo of one upcall.
#pragma once

#include <memory>

#include "qv_orb/request_info.h"
#include "slots.h"

class omniCallDescriptor;
class omniServant;
namespace omni {
class GIOP_S;
}

namespace qv_orb {

class ValueStream;
struct OperationEntry;

enum class Point { kReceiveContexts, kReceiveRequest, kSendReply, kSendException, kSendOther };

/// Lives on the stack of the upcall; its attributes are worked out when they are asked for.
class UpcallInfo final : public virtual PortableInterceptor::ServerRequestInfo {
  public:
    /// `request` is null for a collocated call. All arguments outlive this object.
    UpcallInfo(omniCallDescriptor& call, omniServant& servant, omni::GIOP_S* request);
    ~UpcallInfo() override;

    // What the upcall tells it on its way through the points.
    void at(Point point) { point_ = point; }
    void exception(const CORBA::Exception* exception, PortableInterceptor::ReplyStatus status);
    void forward(CORBA::Object_ptr object);
    void success() { status_ = PortableInterceptor::SUCCESSFUL; }
    SlotTable& slots() { return slots_; }
    IOP::ServiceContextList& reply_contexts() { return reply_contexts_; }
    /// The caller as the ORB names it, "giop:tcp:host:port"; empty for a collocated call.
    const char* peer_address() const;

    // For who reads the values without an Any each.
    omniCallDescriptor& call() { return call_; }
    bool returned() const { return point_ == Point::kSendReply; }
    /// As arguments(): raises BAD_INV_ORDER or NO_RESOURCES when there is nothing to tell.
    const OperationEntry& values_table() const;
    /// The values that the servant was given, marshalled; null unless they were left here.
    const ValueStream* given() const { return given_.get(); }
    void given(std::unique_ptr<ValueStream> values);
    std::shared_ptr<void>& attachment() { return attachment_; }

    // RequestInfo
    CORBA::ULong request_id() override;
    char* operation() override;
    Dynamic::ParameterList* arguments() override;
    Dynamic::ExceptionList* exceptions() override;
    Dynamic::ContextList* contexts() override;
    Dynamic::RequestContext* operation_context() override;
    CORBA::Any* result() override;
    CORBA::Boolean response_expected() override;
    Messaging::SyncScope sync_scope() override;
    PortableInterceptor::ReplyStatus reply_status() override;
    CORBA::Object_ptr forward_reference() override;
    CORBA::Any* get_slot(PortableInterceptor::SlotId id) override;
    IOP::ServiceContext* get_request_service_context(IOP::ServiceID id) override;
    IOP::ServiceContext* get_reply_service_context(IOP::ServiceID id) override;

    // ServerRequestInfo
    CORBA::Any* sending_exception() override;
    char* server_id() override;
    char* orb_id() override;
    CORBA::StringSeq* adapter_name() override;
    CORBA::OctetSeq* object_id() override;
    CORBA::OctetSeq* adapter_id() override;
    char* target_most_derived_interface() override;
    CORBA::Policy_ptr get_server_policy(CORBA::PolicyType type) override;
    void set_slot(PortableInterceptor::SlotId id, const CORBA::Any& data) override;
    CORBA::Boolean target_is_a(const char* id) override;
    void add_reply_service_context(const IOP::ServiceContext& context, CORBA::Boolean replace) override;

  private:
    void ValidAt(std::initializer_list<Point> points) const;
    void NotAtFirstPoint() const;
    const OperationEntry& table() const;

    omniCallDescriptor& call_;
    omniServant& servant_;
    omni::GIOP_S* const request_;
    CORBA::ULong collocated_id_ = 0;  // drawn when first asked for
    Point point_ = Point::kReceiveContexts;
    PortableInterceptor::ReplyStatus status_ = PortableInterceptor::UNKNOWN;
    const CORBA::Exception* exception_ = nullptr;
    CORBA::Object_var forward_;
    mutable const OperationEntry* entry_ = nullptr;  // once it was found
    std::unique_ptr<ValueStream> given_;
    std::shared_ptr<void> attachment_;
    SlotTable slots_;
    IOP::ServiceContextList reply_contexts_;
};

}  // namespace qv_orb
