#pragma once

#include <orbsvcs/CosNotificationC.h>

#include <cstdint>
#include <optional>

#include "services/notify/properties/property_values.h"
#include "services/notify/properties/service_time.h"

namespace qv_notify {

/// What the variable header of an event, and failing that the settings around it, say about its delivery.
struct EventTiming {
    std::int16_t priority = 0;
    std::optional<Time> expires;     ///< not to be delivered from then on
    bool persistent_wanted = false;  ///< it is to survive the end of the process
};

/// Reads the timing of an event that has arrived at `now`. Timeout counts from then, 0 is no timeout; of
/// Timeout and StopTime the earlier counts. Whether an event that wants to be kept can be is up to the
/// channel. Properties that aren't known or are of the wrong type are left to the consumers.
EventTiming ReadEventTiming(const CosNotification::StructuredEvent& event, const PropertyValues& inherited,
                            Time now);

}  // namespace qv_notify
