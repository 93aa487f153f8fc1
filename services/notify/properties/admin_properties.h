#pragma once

#include <orbsvcs/CosNotificationC.h>

#include "services/notify/properties/property_values.h"

namespace qv_notify {

/// The admin properties of a channel that was created without any: no limits, and what doesn't fit is
/// discarded instead of rejected.
PropertyValues DefaultAdmin();

/// Puts what is wanted into `settings`, all of it or nothing: MaxQueueLength, MaxConsumers, MaxSuppliers
/// (long, 0 for no limit) and RejectNewEvents. Raises CosNotification::UnsupportedAdmin, which names every
/// property that is wrong: BAD_PROPERTY, BAD_TYPE or BAD_VALUE with the range.
void ApplyAdmin(const CosNotification::AdminProperties& wanted, PropertyValues& settings);

}  // namespace qv_notify
