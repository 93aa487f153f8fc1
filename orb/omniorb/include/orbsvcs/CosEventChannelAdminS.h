// Skeletons of CosEventChannelAdmin.idl.
#pragma once

#include "orbsvcs/CosEventChannelAdminC.h"
#include "qv_orb/operation_table.h"
