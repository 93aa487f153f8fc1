#pragma once

#include <orbsvcs/CosNotificationC.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "services/notify/properties/service_time.h"

namespace qv_notify {

/// An event on its way through a channel. It doesn't change once it is made: all queues share it.
struct Event {
    CosNotification::StructuredEvent body;
    std::int64_t sequence = 0;  ///< ascends as events arrive at the channel
    bool kept = false;          ///< the store has it, under that number
    std::int16_t priority = 0;
    Time arrived;
    std::optional<Time> expires;
    std::size_t bytes = 0;  ///< MemoryOf(body)
};

using EventPtr = std::shared_ptr<const Event>;

/// About how many bytes of memory the event takes.
std::size_t MemoryOf(const CosNotification::StructuredEvent& event);

}  // namespace qv_notify
