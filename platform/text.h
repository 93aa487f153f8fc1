#pragma once

#include <string>

#include "platform/export.h"

namespace NS_UTIL {

/// True when `text` isn't empty and consists of the digits 0 to 9 alone. Reentrant.
QV_API bool IsDigit(const std::string& text);

}  // namespace NS_UTIL
