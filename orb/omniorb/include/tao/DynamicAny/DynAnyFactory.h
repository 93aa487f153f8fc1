// TAO_DynAnyFactory: DynAny objects without resolving the initial reference "DynAnyFactory".
#pragma once

#include "qv_orb/orb_base.h"

/// Makes DynAny objects; holds nothing. Without an ORB in the process both operations raise BAD_INV_ORDER.
/// Thread-safe. The results are the caller's, who ends each with destroy() and releases it.
class QV_ORB_API TAO_DynAnyFactory {
  public:
    /// A DynAny with the type and value of `value`, which it copies. Raises InconsistentTypeCode for a type
    /// that no DynAny can hold.
    DynamicAny::DynAny_ptr create_dyn_any(const CORBA::Any& value);
    /// A DynAny of that type with its default value. Raises InconsistentTypeCode as above.
    DynamicAny::DynAny_ptr create_dyn_any_from_type_code(CORBA::TypeCode_ptr type);
};
