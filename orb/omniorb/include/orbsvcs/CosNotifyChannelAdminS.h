// Skeletons of CosNotifyChannelAdmin.idl.
#pragma once

#include "orbsvcs/CosNotifyChannelAdminC.h"
#include "qv_orb/operation_table.h"
