// The service's ORB.
#pragma once

#include <tao/ORB.h>

#include "services/notify/program/command_line.h"

namespace qv_notify {

/// An ORB by the options of the command line, the calls of which are bounded as it says. The caller releases
/// it. Raises what CORBA::ORB_init raises; BAD_PARAM for an option that the ORB doesn't understand.
CORBA::ORB_ptr InitOrb(const Settings& settings);

}  // namespace qv_notify
