// Skeletons of CosNotifyFilter.idl.
#pragma once

#include "orbsvcs/CosNotifyFilterC.h"
#include "qv_orb/operation_table.h"
