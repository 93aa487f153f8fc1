// A look at the set-up before the service is started.
#pragma once

#include "services/notify/program/command_line.h"

namespace qv_notify {

/// Prints one line per finding, with what to do about it. Returns the exit code: 0 when the service would
/// start.
int CheckSetup(const Settings& settings);

}  // namespace qv_notify
