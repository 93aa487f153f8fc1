// Tables that the IDL compiler's back-end writes beside the stubs: what an interceptor needs to name and type
// the arguments of a request, since stubs alone do not carry it.
#pragma once

#include <cstddef>
#include <initializer_list>

#include "qv_orb/dynamic.h"
#include "qv_orb/orb_base.h"

namespace qv_orb {

/// Yields a TypeCode that lives as long as the process; the caller does not release it. A function rather
/// than a value because the constants of the stubs are initialised at load, in no particular order.
using TypeCodeGetter = CORBA::TypeCode_ptr (*)();

struct ParameterEntry {
    const char* name;
    CORBA::ParameterMode mode;
    TypeCodeGetter type;
};

struct OperationEntry {
    const char* name;
    TypeCodeGetter result;
    const ParameterEntry* parameters;
    std::size_t parameter_count;
    const TypeCodeGetter* exceptions;
    std::size_t exception_count;
};

struct InterfaceEntry {
    const char* repository_id;
    const OperationEntry* operations;
    std::size_t operation_count;
};

/// Registers tables that live as long as the process. Called while the tables' module is loaded. A repository
/// id that is there already keeps its first table. Always true, so that a constant can be initialised with
/// it.
QV_ORB_API bool RegisterInterfaces(std::initializer_list<const InterfaceEntry*> interfaces);

/// The entry of an operation, null when no table of that interface was registered or it lacks the operation.
/// The operations that every object has ("_is_a", "_non_existent", …) are found for any interface.
/// Thread-safe.
QV_ORB_API const OperationEntry* FindOperation(const char* repository_id, const char* operation);

/// TypeCodes of bounded strings, which have no constant of their own; made once per bound. Thread-safe.
QV_ORB_API CORBA::TypeCode_ptr BoundedString(CORBA::ULong bound);
QV_ORB_API CORBA::TypeCode_ptr BoundedWstring(CORBA::ULong bound);

}  // namespace qv_orb
