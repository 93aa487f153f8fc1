// Stubs of CosNotifyChannelAdmin.idl.
#pragma once

#include "qv_orb/orb_base.h"
#include <CosNotifyChannelAdmin.hh>
