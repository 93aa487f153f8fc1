// module Messaging: the relative round-trip timeout policy.
#pragma once

#include "qv_orb/policies.h"
