// Stubs of CosNotifyComm.idl.
#pragma once

#include "qv_orb/orb_base.h"
#include <CosNotifyComm.hh>
