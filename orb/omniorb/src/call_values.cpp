#include "call_values.h"

#include <omniORB4/anyStream.h>
#include <tcParser.h>

#include <algorithm>

#include "wide_strings.h"

namespace qv_orb {
namespace {

void ReadAny(CORBA::Any& any, TypeCodeGetter type, cdrStream& stream) {
    any.replace(type(), static_cast<void*>(nullptr));
    any.NP_unmarshalDataOnly(stream);
}

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

bool IsVoid(const OperationEntry& operation) {
    return operation.result()->kind() == CORBA::tk_void;
}

bool IsReturned(CORBA::ParameterMode mode) {
    return mode != CORBA::PARAM_IN;
}

std::size_t ReturnedParameters(const OperationEntry& operation) {
    return static_cast<std::size_t>(
        std::count_if(operation.parameters, operation.parameters + operation.parameter_count,
                      [](const ParameterEntry& parameter) { return IsReturned(parameter.mode); }));
}

// Where a value is all that the call gave back it goes straight into the Any: it may be a whole file.
void ReadSoleReturned(CORBA::Any& any, TypeCodeGetter type, omniCallDescriptor& call) {
    any.replace(type(), static_cast<void*>(nullptr));
    cdrAnyMemoryStream& stream = any.PR_streamToWrite();
    stream.TCS_W(WideCodeSet());
    call.marshalReturnedValues(stream);
}

void ReadReturnedParameters(Dynamic::ParameterList& list, omniCallDescriptor& call,
                            const OperationEntry& operation) {
    ValueStream returned;
    MarshalReturned(call, returned);
    if (!IsVoid(operation)) {
        omni::tcParser::skip(operation.result(), returned);
    }
    ReadParameters(list, operation, returned, IsReturned);
}

void ReadSoleParameter(Dynamic::ParameterList& list, omniCallDescriptor& call,
                       const OperationEntry& operation) {
    for (std::size_t i = 0; i < operation.parameter_count; ++i) {
        if (IsReturned(operation.parameters[i].mode)) {
            ReadSoleReturned(list[static_cast<CORBA::ULong>(i)].argument, operation.parameters[i].type, call);
        }
    }
}

}  // namespace

// Most requests fit without the buffer being moved.
ValueStream::ValueStream() : cdrMemoryStream(kUsualSize) {
    TCS_W(WideCodeSet());
}

void MarshalArguments(omniCallDescriptor& call, cdrStream& stream) {
    call.marshalArguments(stream);
    stream.clearValueTracker();
}

void MarshalReturned(omniCallDescriptor& call, cdrStream& stream) {
    call.marshalReturnedValues(stream);
    stream.clearValueTracker();
}

Dynamic::ParameterList* ParametersBeforeCall(omniCallDescriptor& call, const OperationEntry& operation) {
    Dynamic::ParameterList_var list = EmptyParameters(operation);
    ValueStream arguments;
    MarshalArguments(call, arguments);
    ReadParameters(list.inout(), operation, arguments, [](auto mode) { return mode != CORBA::PARAM_OUT; });
    return list._retn();
}

Dynamic::ParameterList* ParametersAfterCall(omniCallDescriptor& call, const OperationEntry& operation) {
    Dynamic::ParameterList_var list = ParametersBeforeCall(call, operation);
    const std::size_t returned = ReturnedParameters(operation);
    if (returned == 1 && IsVoid(operation)) {
        ReadSoleParameter(list.inout(), call, operation);
    } else if (returned != 0) {
        ReadReturnedParameters(list.inout(), call, operation);
    }
    return list._retn();
}

CORBA::Any* ResultOfCall(omniCallDescriptor& call, const OperationEntry& operation) {
    CORBA::Any_var result = new CORBA::Any;
    if (IsVoid(operation)) {
        result->replace(CORBA::_tc_void, static_cast<void*>(nullptr));
    } else if (ReturnedParameters(operation) == 0) {
        ReadSoleReturned(result.inout(), operation.result, call);
    } else {
        ValueStream returned;
        MarshalReturned(call, returned);
        ReadAny(result.inout(), operation.result, returned);
    }
    return result._retn();
}

}  // namespace qv_orb
