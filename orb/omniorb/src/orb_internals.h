// The internal headers of the ORB that the seam looks into, in the one order in which they compile.
#pragma once

// clang-format off
#include "qv_orb/orb_base.h"

#include <omniORB4/IOP_S.h>
#include <omniORB4/callDescriptor.h>
#include <omniORB4/callHandle.h>
#include <omniORB4/codeSets.h>
#include <omniORB4/omniInterceptors.h>
#include <omniORB4/omniServant.h>

#include <giopStream.h>
#include <giopStrand.h>
#include <GIOP_S.h>

#include <dynamicImplementation.h>
#include <initialiser.h>
#include <localIdentity.h>
#include <poaimpl.h>
#include <remoteIdentity.h>
// clang-format on
