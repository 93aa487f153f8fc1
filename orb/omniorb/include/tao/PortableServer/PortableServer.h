// module PortableServer.
#pragma once

#include "qv_orb/orb_base.h"
