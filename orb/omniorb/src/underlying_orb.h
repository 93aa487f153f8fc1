// The one place that calls the ORB's own ORB_init.
#pragma once

#include "orb_options.h"

namespace CORBA {
class ORB;
}

namespace qv_orb {

/// Makes the ORB with the translated options and the seam's own defaults; the caller owns the reference.
CORBA::ORB* MakeUnderlyingOrb(const OrbOptions& options);

}  // namespace qv_orb
