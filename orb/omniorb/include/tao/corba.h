// The whole of the CORBA module.
#pragma once

#include "qv_orb/orb_base.h"
