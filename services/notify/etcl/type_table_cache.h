#pragma once

#include "services/notify/etcl/type_table.h"

namespace qv_notify::etcl {

/// The table of `type`, which is read once and kept, within limits, since events are of few types. Any thread
/// may ask. Raises what TypeTable::Read raises.
TypeTablePtr TableOf(CORBA::TypeCode_ptr type);

/// The table of the TypeCode that comes next in `reader`, which stands behind it afterwards: the type of an
/// Any inside of a value.
TypeTablePtr TableOfNextType(CdrReader& reader);

}  // namespace qv_notify::etcl
