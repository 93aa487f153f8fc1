#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "services/notify/queue/event_queue.h"

namespace qv_notify_test {

inline const qv_notify::Time kNow = qv_notify::Time(std::chrono::seconds(1'700'000'000));

inline qv_notify::EventPtr MakeEvent(std::int64_t sequence, std::int16_t priority = 0,
                                     std::optional<qv_notify::Time> expires = std::nullopt) {
    const auto event = std::make_shared<qv_notify::Event>();
    event->sequence = sequence;
    event->priority = priority;
    event->arrived = kNow;
    event->expires = expires;
    event->bytes = static_cast<std::size_t>(sequence) * 10;
    return event;
}

inline std::vector<std::int64_t> SequencesOf(const std::vector<qv_notify::EventPtr>& events) {
    std::vector<std::int64_t> sequences;
    for (const qv_notify::EventPtr& event : events) {
        sequences.push_back(event->sequence);
    }
    return sequences;
}

/// What Pop gives until there is nothing left.
inline std::vector<std::int64_t> PopAll(qv_notify::EventQueue& queue) {
    std::vector<std::int64_t> sequences;
    std::vector<qv_notify::EventPtr> expired;
    while (const qv_notify::EventPtr event = queue.Pop(kNow, expired)) {
        sequences.push_back(event->sequence);
    }
    return sequences;
}

}  // namespace qv_notify_test
