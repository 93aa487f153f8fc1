#include "orb/request_values.h"

#include "orb_internals.h"

#include <vector>

#include "call_values.h"
#include "upcall_info.h"

namespace qv_orb {
namespace {

constexpr int kTooManyToCopy = 64 << 10;

// Leaves large arrays of bytes where they are.
class DetourStream final : public ValueStream {
  public:
    void put_octet_array(const CORBA::Octet* octets, int size, omni::alignment_t align) override {
        if (size < kTooManyToCopy || align != omni::ALIGN_1) {
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
    std::vector<CdrDetour> detours_;
};

class UpcallValues final : public RequestValues {
  public:
    UpcallValues(omniCallDescriptor& call, const OperationEntry& operation, bool returned)
        : call_(call), operation_(operation), returned_(returned) {}

    std::size_t parameters() const override { return operation_.parameter_count; }
    CORBA::ParameterMode mode(std::size_t parameter) const override {
        return operation_.parameters[parameter].mode;
    }
    CORBA::TypeCode_ptr type(std::size_t parameter) const override {
        return operation_.parameters[parameter].type();
    }
    CORBA::TypeCode_ptr result_type() const override { return operation_.result(); }
    bool returned() const override { return returned_; }

    CdrBytes sent() override {
        sent_ = std::make_unique<DetourStream>();
        MarshalArguments(call_, *sent_);
        return sent_->Bytes();
    }
    CdrBytes given_back() override {
        given_back_ = std::make_unique<DetourStream>();
        MarshalReturned(call_, *given_back_);
        return given_back_->Bytes();
    }

  private:
    omniCallDescriptor& call_;
    const OperationEntry& operation_;
    const bool returned_;
    std::unique_ptr<DetourStream> sent_;
    std::unique_ptr<DetourStream> given_back_;
};

}  // namespace

std::unique_ptr<RequestValues> RequestValues::Of(PortableInterceptor::ServerRequestInfo_ptr info) {
    auto* const upcall = dynamic_cast<UpcallInfo*>(info);
    if (upcall == nullptr) {
        return nullptr;
    }
    return std::make_unique<UpcallValues>(upcall->call(), upcall->values_table(), upcall->returned());
}

}  // namespace qv_orb
