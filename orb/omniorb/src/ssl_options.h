// What the service configuration file adds to the ORB's options.
#pragma once

#include "orb_options.h"

namespace qv_orb {

/// Reads the file of -ORBSvcConf, sets the next ORB's SSL up by it and adds to the options what goes with it.
/// A file that is missing or has no SSLIOP factory leaves the ORB without SSL. Raises CORBA::INITIALIZE,
/// after one reported sentence, when SSL is asked for and can't be had. Only while there is no ORB.
void ApplySslOptions(OrbOptions& options);

}  // namespace qv_orb
