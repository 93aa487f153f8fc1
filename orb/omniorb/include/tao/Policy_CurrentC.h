// CORBA::PolicyCurrent.
#pragma once

#include "qv_orb/policies.h"
