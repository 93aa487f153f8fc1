#pragma once

#include <string>

#include "platform/export.h"

namespace qv_standalone {

/// Where the configured file of users lies, for programs that write it; empty when none is configured. Any
/// thread may call it. Programs that must also run on an EMS host don't use it.
QV_API std::string UsersFile();

}  // namespace qv_standalone
