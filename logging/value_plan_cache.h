#pragma once

#include <tao/corba.h>

#include <memory>

#include "logging/cdr_reader.h"
#include "logging/value_plan.h"

namespace NS_CORBA {

/// A plan to print with. Shared, so that it outlives its place in a cache.
using PlanHandle = std::shared_ptr<const ValuePlan>;

/// The plan of `type`. Types of interfaces are read once and kept; any thread may ask. Raises what
/// ValuePlan::Read raises.
PlanHandle PlanOf(CORBA::TypeCode_ptr type);

/// The plan of the TypeCode that comes next in `reader`, which stands behind it afterwards: the type of an
/// Any inside of a value. Kept as well, within limits, since clients send few different ones. Raises what
/// ValuePlan::Read raises.
PlanHandle PlanOfNextType(CdrReader& reader);

}  // namespace NS_CORBA
