// module TimeBase.
#pragma once

#include "qv_orb/policies.h"
