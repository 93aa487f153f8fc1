#include "orb/request_values.h"

#include "orb_internals.h"

#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "call_values.h"
#include "upcall_info.h"

namespace qv_orb {
namespace {

constexpr int kTooManyToCopy = 64 << 10;
// What the servant gets is marshalled for the request's record and again for the reply's, unless it is small
// enough to be kept meanwhile.
constexpr std::size_t kTooManyToKeep = 16 << 10;

CdrBytes BytesOf(const ValueStream& stream) {
    return {static_cast<const char*>(stream.bufPtr()), stream.bufSize(), nullptr, 0};
}

// Tells the types whose values the ORB marshals straight from where the servant has them. Of all others
// (Anys, TypeCodes, references, values) it may put bytes that it keeps no longer than it takes to put them,
// and what an Any holds it puts in blocks that have padding inside.
class StayingTypes {
  public:
    bool Holds(CORBA::TypeCode_ptr type) {
        switch (type->kind()) {
            case CORBA::tk_null:
            case CORBA::tk_void:
            case CORBA::tk_short:
            case CORBA::tk_long:
            case CORBA::tk_longlong:
            case CORBA::tk_ushort:
            case CORBA::tk_ulong:
            case CORBA::tk_ulonglong:
            case CORBA::tk_float:
            case CORBA::tk_double:
            case CORBA::tk_longdouble:
            case CORBA::tk_fixed:
            case CORBA::tk_boolean:
            case CORBA::tk_char:
            case CORBA::tk_wchar:
            case CORBA::tk_octet:
            case CORBA::tk_enum:
            case CORBA::tk_string:
            case CORBA::tk_wstring:
                return true;
            case CORBA::tk_alias:
            case CORBA::tk_sequence:
            case CORBA::tk_array:
                return Holds(CORBA::TypeCode_var(type->content_type()).in());
            case CORBA::tk_struct:
            case CORBA::tk_union:
                return HoldsMembers(type);
            default:
                return false;
        }
    }

  private:
    bool HoldsMembers(CORBA::TypeCode_ptr type) {
        if (!seen_.insert(type->id()).second) {
            return true;  // a type that contains itself: on its way already
        }
        for (CORBA::ULong i = 0; i < type->member_count(); ++i) {
            if (!Holds(CORBA::TypeCode_var(type->member_type(i)).in())) {
                return false;
            }
        }
        return true;
    }

    std::set<std::string> seen_;
};

bool FindWhetherBytesStay(const OperationEntry& operation) {
    StayingTypes types;
    bool stay = types.Holds(operation.result());
    for (std::size_t i = 0; i < operation.parameter_count && stay; ++i) {
        stay = types.Holds(operation.parameters[i].type());
    }
    return stay;
}

// Whether the bytes of all values of the operation stay where they are for as long as its call lasts.
bool BytesStay(const OperationEntry& operation) {
    struct Known {
        std::mutex mutex;
        std::unordered_map<const OperationEntry*, bool> answers;
    };
    static Known* const known = new Known;  // calls may still be on their way while the process ends
    std::lock_guard<std::mutex> guard(known->mutex);
    const auto found = known->answers.find(&operation);
    if (found != known->answers.end()) {
        return found->second;
    }
    return known->answers[&operation] = FindWhetherBytesStay(operation);
}

// Leaves large arrays of bytes where they are, if they stay there.
class DetourStream final : public ValueStream {
  public:
    explicit DetourStream(const OperationEntry& operation) : operation_(operation) {}

    void put_octet_array(const CORBA::Octet* octets, int size, omni::alignment_t align) override {
        if (size < kTooManyToCopy || align != omni::ALIGN_1 || !BytesStay(operation_)) {
            ValueStream::put_octet_array(octets, size, align);
            return;
        }
        detours_.push_back(
            {bufSize(), reinterpret_cast<const char*>(octets), static_cast<std::size_t>(size)});
        ValueStream::put_octet_array(octets, size % static_cast<int>(kCdrPhase), align);
    }

    CdrBytes Bytes() const {
        return {static_cast<const char*>(bufPtr()), bufSize(), detours_.data(), detours_.size()};
    }

  private:
    const OperationEntry& operation_;
    std::vector<CdrDetour> detours_;
};

class UpcallValues final : public RequestValues {
  public:
    explicit UpcallValues(UpcallInfo& upcall) : upcall_(upcall), operation_(upcall.values_table()) {}

    std::size_t parameters() const override { return operation_.parameter_count; }
    CORBA::ParameterMode mode(std::size_t parameter) const override {
        return operation_.parameters[parameter].mode;
    }
    CORBA::TypeCode_ptr type(std::size_t parameter) const override {
        return operation_.parameters[parameter].type();
    }
    CORBA::TypeCode_ptr result_type() const override { return operation_.result(); }
    bool returned() const override { return upcall_.returned(); }

    CdrBytes sent() override {
        if (upcall_.given() != nullptr) {
            return BytesOf(*upcall_.given());
        }
        sent_ = std::make_unique<DetourStream>(operation_);
        MarshalArguments(upcall_.call(), *sent_);
        const CdrBytes bytes = sent_->Bytes();
        if (!returned() && bytes.detour_count == 0 && bytes.size <= kTooManyToKeep) {
            upcall_.given(std::move(sent_));
        }
        return bytes;
    }
    CdrBytes given_back() override {
        given_back_ = std::make_unique<DetourStream>(operation_);
        MarshalReturned(upcall_.call(), *given_back_);
        return given_back_->Bytes();
    }
    std::shared_ptr<void>& attachment() override { return upcall_.attachment(); }

  private:
    UpcallInfo& upcall_;
    const OperationEntry& operation_;
    std::unique_ptr<DetourStream> sent_;
    std::unique_ptr<DetourStream> given_back_;
};

}  // namespace

std::unique_ptr<RequestValues> RequestValues::Of(PortableInterceptor::ServerRequestInfo_ptr info) {
    auto* const upcall = dynamic_cast<UpcallInfo*>(info);
    if (upcall == nullptr) {
        return nullptr;
    }
    return std::make_unique<UpcallValues>(*upcall);
}

}  // namespace qv_orb
