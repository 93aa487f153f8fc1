// Stubs of CosEventComm.idl.
#pragma once

#include "qv_orb/orb_base.h"
#include <CosEventComm.hh>
