#include "upcall_info.h"

#include "orb_internals.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "call_values.h"
#include "minor_codes.h"
#include "orb_state.h"

namespace qv_orb {
namespace {

// The ORB keeps the request id of its stream protected.
struct RequestIdReader : omni::giopStream {
    static CORBA::ULong Read(const omni::giopStream& stream) {
        CORBA::ULong (omni::giopStream::*id)() const = &RequestIdReader::requestId;
        return (stream.*id)();
    }
};

CORBA::ULong NextCollocatedId() {
    static std::atomic<CORBA::ULong> last{0};
    return ++last;
}

const IOP::ServiceContext* FindContext(const IOP::ServiceContextList& contexts, IOP::ServiceID id) {
    for (CORBA::ULong i = 0; i < contexts.length(); ++i) {
        if (contexts[i].context_id == id) {
            return &contexts[i];
        }
    }
    return nullptr;
}

IOP::ServiceContext* CopyContext(const IOP::ServiceContext* context) {
    if (context == nullptr) {
        throw CORBA::BAD_PARAM(kNoSuchServiceContext, CORBA::COMPLETED_NO);
    }
    return new IOP::ServiceContext(*context);
}

CORBA::OctetSeq* Octets(const CORBA::Octet* first, std::size_t count) {
    auto* octets = new CORBA::OctetSeq;
    octets->length(static_cast<CORBA::ULong>(count));
    std::copy_n(first, count, octets->get_buffer());
    return octets;
}

[[noreturn]] void NotSupplied() {
    throw CORBA::NO_RESOURCES(kNotSupportedByBinding, CORBA::COMPLETED_NO);
}

}  // namespace

UpcallInfo::UpcallInfo(omniCallDescriptor& call, omniServant& servant, omni::GIOP_S* request)
    : call_(call), servant_(servant), request_(request) {}

UpcallInfo::~UpcallInfo() = default;

void UpcallInfo::exception(const CORBA::Exception* exception, PortableInterceptor::ReplyStatus status) {
    exception_ = exception;
    status_ = status;
}

void UpcallInfo::forward(CORBA::Object_ptr object) {
    forward_ = CORBA::Object::_duplicate(object);
    status_ = PortableInterceptor::LOCATION_FORWARD;
}

const char* UpcallInfo::peer_address() const {
    if (request_ == nullptr || request_->strand().connection == nullptr) {
        return "";
    }
    const char* address = request_->strand().connection->peeraddress();
    return address != nullptr ? address : "";
}

void UpcallInfo::ValidAt(std::initializer_list<Point> points) const {
    if (std::find(points.begin(), points.end(), point_) == points.end()) {
        throw CORBA::BAD_INV_ORDER(kAttributeNotValidHere, CORBA::COMPLETED_NO);
    }
}

void UpcallInfo::NotAtFirstPoint() const {
    if (point_ == Point::kReceiveContexts) {
        throw CORBA::BAD_INV_ORDER(kAttributeNotValidHere, CORBA::COMPLETED_NO);
    }
}

const OperationEntry& UpcallInfo::table() const {
    if (entry_ == nullptr) {
        entry_ = FindOperation(servant_._mostDerivedRepoId(), call_.op());
    }
    if (entry_ == nullptr) {
        NotSupplied();
    }
    return *entry_;
}

const OperationEntry& UpcallInfo::values_table() const {
    ValidAt({Point::kReceiveRequest, Point::kSendReply});
    return table();
}

void UpcallInfo::given(std::unique_ptr<ValueStream> values) {
    given_ = std::move(values);
}

CORBA::ULong UpcallInfo::request_id() {
    if (request_ != nullptr) {
        return RequestIdReader::Read(*request_);
    }
    if (collocated_id_ == 0) {
        collocated_id_ = NextCollocatedId();
    }
    return collocated_id_;
}

char* UpcallInfo::operation() {
    return CORBA::string_dup(call_.op());
}

Dynamic::ParameterList* UpcallInfo::arguments() {
    ValidAt({Point::kReceiveRequest, Point::kSendReply});
    return point_ == Point::kSendReply ? ParametersAfterCall(call_, table())
                                       : ParametersBeforeCall(call_, table());
}

Dynamic::ExceptionList* UpcallInfo::exceptions() {
    NotAtFirstPoint();
    const OperationEntry& operation = table();
    Dynamic::ExceptionList_var list = new Dynamic::ExceptionList;
    list->length(static_cast<CORBA::ULong>(operation.exception_count));
    for (std::size_t i = 0; i < operation.exception_count; ++i) {
        list[static_cast<CORBA::ULong>(i)] = CORBA::TypeCode::_duplicate(operation.exceptions[i]());
    }
    return list._retn();
}

Dynamic::ContextList* UpcallInfo::contexts() {
    NotAtFirstPoint();
    NotSupplied();
}

Dynamic::RequestContext* UpcallInfo::operation_context() {
    ValidAt({Point::kReceiveRequest, Point::kSendReply});
    NotSupplied();
}

CORBA::Any* UpcallInfo::result() {
    ValidAt({Point::kSendReply});
    return ResultOfCall(call_, table());
}

CORBA::Boolean UpcallInfo::response_expected() {
    return request_ != nullptr ? request_->response_expected() : !call_.is_oneway();
}

Messaging::SyncScope UpcallInfo::sync_scope() {
    return response_expected() ? Messaging::SYNC_WITH_TARGET : Messaging::SYNC_WITH_TRANSPORT;
}

PortableInterceptor::ReplyStatus UpcallInfo::reply_status() {
    ValidAt({Point::kSendReply, Point::kSendException, Point::kSendOther});
    return status_;
}

CORBA::Object_ptr UpcallInfo::forward_reference() {
    ValidAt({Point::kSendOther});
    return CORBA::Object::_duplicate(forward_);
}

CORBA::Any* UpcallInfo::get_slot(PortableInterceptor::SlotId id) {
    return slots_.Get(id);
}

void UpcallInfo::set_slot(PortableInterceptor::SlotId id, const CORBA::Any& data) {
    slots_.Set(id, data);
}

IOP::ServiceContext* UpcallInfo::get_request_service_context(IOP::ServiceID id) {
    return CopyContext(request_ != nullptr ? FindContext(request_->service_contexts(), id) : nullptr);
}

IOP::ServiceContext* UpcallInfo::get_reply_service_context(IOP::ServiceID id) {
    ValidAt({Point::kSendReply, Point::kSendException, Point::kSendOther});
    return CopyContext(FindContext(reply_contexts_, id));
}

CORBA::Any* UpcallInfo::sending_exception() {
    ValidAt({Point::kSendException});
    if (exception_ == nullptr || exception_->insertToAnyFn() == nullptr) {
        NotSupplied();
    }
    CORBA::Any_var any = new CORBA::Any;
    exception_->insertToAnyFn()(any.inout(), *exception_);
    return any._retn();
}

char* UpcallInfo::server_id() {
    NotAtFirstPoint();
    return CORBA::string_dup(orb_state().server_id.c_str());
}

char* UpcallInfo::orb_id() {
    NotAtFirstPoint();
    return CORBA::string_dup(orb_state().orb_id.c_str());
}

CORBA::StringSeq* UpcallInfo::adapter_name() {
    NotAtFirstPoint();
    constexpr std::size_t kUsualDepth = 8;
    std::vector<CORBA::String_var> names;  // innermost first
    names.reserve(kUsualDepth);
    PortableServer::POA_var poa = PortableServer::POA::_duplicate(call_.poa());
    while (!CORBA::is_nil(poa)) {
        names.emplace_back(poa->the_name());
        poa = poa->the_parent();
    }
    const auto depth = static_cast<CORBA::ULong>(names.size());
    CORBA::StringSeq_var path = new CORBA::StringSeq(depth);
    path->length(depth);
    for (CORBA::ULong i = 0; i < depth; ++i) {
        path[i] = names[depth - 1 - i]._retn();
    }
    return path._retn();
}

CORBA::OctetSeq* UpcallInfo::object_id() {
    NotAtFirstPoint();
    PortableServer::ObjectId_var id = call_.poa()->localId_to_ObjectId(call_.localId());
    return Octets(id->get_buffer(), id->length());
}

CORBA::OctetSeq* UpcallInfo::adapter_id() {
    NotAtFirstPoint();
    CORBA::StringSeq_var path = adapter_name();
    std::string joined;
    for (CORBA::ULong i = 0; i < path->length(); ++i) {
        joined.append(path[i]).push_back('\0');
    }
    return Octets(reinterpret_cast<const CORBA::Octet*>(joined.data()), joined.size());
}

char* UpcallInfo::target_most_derived_interface() {
    ValidAt({Point::kReceiveRequest});
    return CORBA::string_dup(servant_._mostDerivedRepoId());
}

CORBA::Policy_ptr UpcallInfo::get_server_policy(CORBA::PolicyType) {
    // Only types with a registered policy factory can be asked for, and this ORB takes none.
    throw CORBA::INV_POLICY(kNoPolicyFactory, CORBA::COMPLETED_NO);
}

CORBA::Boolean UpcallInfo::target_is_a(const char* id) {
    ValidAt({Point::kReceiveRequest});
    return servant_._is_a(id);
}

void UpcallInfo::add_reply_service_context(const IOP::ServiceContext& context, CORBA::Boolean replace) {
    const IOP::ServiceContext* present = FindContext(reply_contexts_, context.context_id);
    if (present != nullptr && !replace) {
        throw CORBA::BAD_INV_ORDER(kReplyContextExists, CORBA::COMPLETED_NO);
    }
    if (present != nullptr) {
        const_cast<IOP::ServiceContext&>(*present) = context;
        return;
    }
    const CORBA::ULong length = reply_contexts_.length();
    reply_contexts_.length(length + 1);
    reply_contexts_[length] = context;
}

}  // namespace qv_orb
