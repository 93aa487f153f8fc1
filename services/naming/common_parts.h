// The parts of services that the naming service is made of.
#pragma once

#include "services/common/start_error.h"

namespace qv_naming {

using namespace qv_service;

}  // namespace qv_naming
