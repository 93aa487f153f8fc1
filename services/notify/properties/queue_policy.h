#pragma once

#include <cstddef>

#include "services/notify/properties/property_values.h"

namespace qv_notify {

/// The order in which events are delivered; the numbers are those of CosNotification.
enum class Order { kAny = 0, kFifo = 1, kPriority = 2, kDeadline = 3 };
/// Which event goes first when there are too many; the numbers are those of CosNotification.
enum class Discard { kAny = 0, kFifo = 1, kPriority = 2, kDeadline = 3, kLifo = 4 };

/// How the events for one consumer are queued.
struct QueuePolicy {
    Order order = Order::kAny;
    Discard discard = Discard::kAny;
    std::size_t max_events = 0;  ///< 0: no limit
};

bool operator==(const QueuePolicy& left, const QueuePolicy& right);

/// The policy that follows from what holds for a proxy (see Inherit). Without a MaxEventsPerConsumer there,
/// `default_limit` is the most events; 0: no limit.
QueuePolicy QueuePolicyOf(const PropertyValues& holding, std::size_t default_limit);

}  // namespace qv_notify
