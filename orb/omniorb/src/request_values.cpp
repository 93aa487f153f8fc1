#include "orb/request_values.h"

#include "orb_internals.h"

#include <memory>
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
        sent_ = std::make_unique<DetourStream>();
        MarshalArguments(upcall_.call(), *sent_);
        const CdrBytes bytes = sent_->Bytes();
        if (!returned() && bytes.detour_count == 0 && bytes.size <= kTooManyToKeep) {
            upcall_.given(std::move(sent_));
        }
        return bytes;
    }
    CdrBytes given_back() override {
        given_back_ = std::make_unique<DetourStream>();
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
