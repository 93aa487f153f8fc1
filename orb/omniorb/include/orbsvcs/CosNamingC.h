// module CosNaming, stubs.
#pragma once

#include "qv_orb/orb_base.h"
#include <omniORB4/Naming.hh>
