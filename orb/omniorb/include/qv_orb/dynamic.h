// module Dynamic (CORBA 3.0, 21.9): parameter lists.
#pragma once

#include "qv_orb/orb_base.h"

#include <Dynamic.hh>
