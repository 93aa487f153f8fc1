// Stubs of CosNotifyFilter.idl.
#pragma once

#include "qv_orb/orb_base.h"
#include <CosNotifyFilter.hh>
