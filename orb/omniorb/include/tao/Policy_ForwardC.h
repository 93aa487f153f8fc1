// CORBA::Policy and PolicyList.
#pragma once

#include "qv_orb/orb_base.h"
