#pragma once

#include <string>

#include "globaldefsC.h"

namespace qv_demo {

/// Raises the interface's exception.
[[noreturn]] void Fail(globaldefs::ExceptionType_T type, const std::string& reason);

}  // namespace qv_demo
