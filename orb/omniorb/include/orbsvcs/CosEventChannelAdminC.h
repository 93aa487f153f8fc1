// Stubs of CosEventChannelAdmin.idl.
#pragma once

#include "qv_orb/orb_base.h"
#include <CosEventChannelAdmin.hh>
