#include "services/notify/properties/queue_policy.h"

#include <orbsvcs/CosNotificationC.h>

namespace qv_notify {

bool operator==(const QueuePolicy& left, const QueuePolicy& right) {
    return left.order == right.order && left.discard == right.discard && left.max_events == right.max_events;
}

QueuePolicy QueuePolicyOf(const PropertyValues& holding, std::size_t default_limit) {
    const auto order =
        ValueOf(holding, CosNotification::OrderPolicy, std::int16_t{CosNotification::PriorityOrder});
    const auto discard =
        ValueOf(holding, CosNotification::DiscardPolicy, std::int16_t{CosNotification::AnyOrder});
    const auto limit = ValueOf(holding, CosNotification::MaxEventsPerConsumer, std::int32_t{0});
    return {static_cast<Order>(order), static_cast<Discard>(discard),
            limit > 0 ? static_cast<std::size_t>(limit) : default_limit};
}

}  // namespace qv_notify
