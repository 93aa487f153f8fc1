#include "call_values.h"

#include "orb_internals.h"
#include "wide_strings.h"

namespace qv_orb {
namespace {

void ReadAny(CORBA::Any& any, TypeCodeGetter type, cdrStream& stream) {
    any.replace(type(), static_cast<void*>(nullptr));
    any.NP_unmarshalDataOnly(stream);
}

// Holds the values between the call descriptor and the Anys.
class ValueStream : public cdrMemoryStream {
  public:
    ValueStream() { TCS_W(WideCodeSet()); }
};

Dynamic::ParameterList* EmptyParameters(const OperationEntry& operation) {
    auto* list = new Dynamic::ParameterList;
    list->length(static_cast<CORBA::ULong>(operation.parameter_count));
    for (std::size_t i = 0; i < operation.parameter_count; ++i) {
        (*list)[static_cast<CORBA::ULong>(i)].mode = operation.parameters[i].mode;
    }
    return list;
}

// Reads those parameters of the list that `wanted` accepts, in the order of the IDL.
template <class Wanted>
void ReadParameters(Dynamic::ParameterList& list, const OperationEntry& operation, cdrStream& stream,
                    Wanted wanted) {
    for (std::size_t i = 0; i < operation.parameter_count; ++i) {
        if (wanted(operation.parameters[i].mode)) {
            ReadAny(list[static_cast<CORBA::ULong>(i)].argument, operation.parameters[i].type, stream);
        }
    }
}

void MarshalArguments(omniCallDescriptor& call, cdrStream& stream) {
    call.marshalArguments(stream);
    stream.clearValueTracker();
}

void MarshalReturned(omniCallDescriptor& call, cdrStream& stream) {
    call.marshalReturnedValues(stream);
    stream.clearValueTracker();
}

bool IsVoid(const OperationEntry& operation) {
    return operation.result()->kind() == CORBA::tk_void;
}

}  // namespace

Dynamic::ParameterList* ParametersBeforeCall(omniCallDescriptor& call, const OperationEntry& operation) {
    Dynamic::ParameterList_var list = EmptyParameters(operation);
    ValueStream arguments;
    MarshalArguments(call, arguments);
    ReadParameters(list.inout(), operation, arguments, [](auto mode) { return mode != CORBA::PARAM_OUT; });
    return list._retn();
}

Dynamic::ParameterList* ParametersAfterCall(omniCallDescriptor& call, const OperationEntry& operation) {
    Dynamic::ParameterList_var list = ParametersBeforeCall(call, operation);
    ValueStream returned;
    MarshalReturned(call, returned);
    if (!IsVoid(operation)) {
        CORBA::Any result;
        ReadAny(result, operation.result, returned);
    }
    ReadParameters(list.inout(), operation, returned, [](auto mode) { return mode != CORBA::PARAM_IN; });
    return list._retn();
}

CORBA::Any* ResultOfCall(omniCallDescriptor& call, const OperationEntry& operation) {
    CORBA::Any_var result = new CORBA::Any;
    if (IsVoid(operation)) {
        result->replace(CORBA::_tc_void, static_cast<void*>(nullptr));
        return result._retn();
    }
    ValueStream returned;
    MarshalReturned(call, returned);
    ReadAny(result.inout(), operation.result, returned);
    return result._retn();
}

}  // namespace qv_orb
