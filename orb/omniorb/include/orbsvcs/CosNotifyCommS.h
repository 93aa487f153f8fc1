// Skeletons of CosNotifyComm.idl.
#pragma once

#include "orbsvcs/CosNotifyCommC.h"
#include "qv_orb/operation_table.h"
