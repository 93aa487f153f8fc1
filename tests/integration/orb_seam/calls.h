// Calls by name with the outcome as a line of text, the same from this process and from another one.
#pragma once

#include <string>

#include "seamC.h"

namespace qv_test {

/// Calls `operation` of `target` with `argument` where it takes one. The outcome: what it returned, or
/// "NAME 0xminor YES|NO|MAYBE" for a system exception, "Refused reason code" for the declared user exception.
std::string CallByName(Seam::Target_ptr target, const std::string& operation, const std::string& argument);

/// "NAME 0xminor YES|NO|MAYBE".
std::string Describe(const CORBA::SystemException& ex);

}  // namespace qv_test
