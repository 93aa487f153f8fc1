// Skeletons of CosNotification.idl.
#pragma once

#include "orbsvcs/CosNotificationC.h"
#include "qv_orb/operation_table.h"
