// What stubs of IDL that includes orb.idl ask for: part of the ORB's own header.
#pragma once

#include "qv_orb/orb_base.h"
