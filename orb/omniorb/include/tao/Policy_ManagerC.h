// CORBA::PolicyManager.
#pragma once

#include "qv_orb/policies.h"
