#include "orb/request_values.h"

#include "orb_internals.h"

#include "call_values.h"
#include "upcall_info.h"

namespace qv_orb {
namespace {

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
        sent_ = std::make_unique<ValueStream>();
        MarshalArguments(call_, *sent_);
        return Bytes(*sent_);
    }
    CdrBytes given_back() override {
        given_back_ = std::make_unique<ValueStream>();
        MarshalReturned(call_, *given_back_);
        return Bytes(*given_back_);
    }

  private:
    static CdrBytes Bytes(const ValueStream& stream) {
        return {static_cast<const char*>(stream.bufPtr()), stream.bufSize()};
    }

    omniCallDescriptor& call_;
    const OperationEntry& operation_;
    const bool returned_;
    std::unique_ptr<ValueStream> sent_;
    std::unique_ptr<ValueStream> given_back_;
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
