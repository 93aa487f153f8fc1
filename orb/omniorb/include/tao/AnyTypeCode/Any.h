// CORBA::Any.
#pragma once

#include "qv_orb/orb_base.h"
