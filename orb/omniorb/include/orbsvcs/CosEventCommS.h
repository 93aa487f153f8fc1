// Skeletons of CosEventComm.idl.
#pragma once

#include "orbsvcs/CosEventCommC.h"
#include "qv_orb/operation_table.h"
