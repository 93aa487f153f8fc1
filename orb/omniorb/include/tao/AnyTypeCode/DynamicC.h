// module Dynamic: parameter lists.
#pragma once

#include "qv_orb/dynamic.h"
