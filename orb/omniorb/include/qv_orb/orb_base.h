// The ORB's own headers, with the one function renamed that the seam defines itself: CORBA::ORB_init, which
// here translates options and runs the registered ORB initializers.
#pragma once

#define ORB_init qv_underlying_orb_init
#include <omniORB4/CORBA.h>
#undef ORB_init

#include "orb/export.h"

namespace CORBA {

/// Makes the process's ORB, or returns another reference to it while one exists. Removes the -ORB options
/// from argv. Raises BAD_PARAM for an unknown option or a bad value, after a line on the diagnostic sink that
/// names it, and whatever an ORB initializer raises.
QV_ORB_API ORB_ptr ORB_init(int& argc, char** argv, const char* orb_id = nullptr);

}  // namespace CORBA

#include "qv_orb/reference_types.h"
