// CORBA::Policy, PolicyList and the policy managers.
#pragma once

#include "qv_orb/policies.h"
