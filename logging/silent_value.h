#pragma once

#include "logging/cdr_reader.h"
#include "logging/value_plan.h"

namespace NS_CORBA {

/// Moves `reader` over a value of a kind that records don't show. Raises CORBA::NO_IMPLEMENT for kinds whose
/// length isn't to be told from the bytes: values and what may be one.
void SkipSilentValue(const ValuePlan::Type& type, CdrReader& reader);

}  // namespace NS_CORBA
