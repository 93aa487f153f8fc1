// CORBA::ORB, CORBA::Object and the basic types.
#pragma once

#include "qv_orb/orb_base.h"
