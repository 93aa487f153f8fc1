// Stubs of CosNotification.idl.
#pragma once

#include "qv_orb/orb_base.h"
#include <CosNotification.hh>
