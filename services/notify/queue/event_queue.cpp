#include "services/notify/queue/event_queue.h"

#include <limits>
#include <utility>

namespace qv_notify {
namespace {

std::int64_t DeadlineOf(const Event& event) {
    return event.expires ? event.expires->time_since_epoch().count()
                         : std::numeric_limits<std::int64_t>::max();
}

}  // namespace

EventQueue::EventQueue(const QueuePolicy& policy) : m_policy(policy) {}

EventQueue::Key EventQueue::DeliveryKey(const Waiting& waiting) const {
    std::int64_t rank = 0;
    if (m_policy.order == Order::kPriority) {
        rank = -waiting.event->priority;
    } else if (m_policy.order == Order::kDeadline) {
        rank = DeadlineOf(*waiting.event);
    }
    return {rank, waiting.event->sequence, waiting.turn};
}

EventQueue::Key EventQueue::DiscardKey(const Waiting& waiting) const {
    const std::int64_t sequence = waiting.event->sequence;
    switch (m_policy.discard) {
        case Discard::kPriority:
            return {waiting.event->priority, sequence, waiting.turn};
        case Discard::kDeadline:
            return {DeadlineOf(*waiting.event), sequence, waiting.turn};
        case Discard::kLifo:
            return {0, -sequence, -waiting.turn};
        case Discard::kAny:
        case Discard::kFifo:
            break;
    }
    return {0, sequence, waiting.turn};
}

EventQueue::Key EventQueue::DeadlineKey(const Waiting& waiting) {
    return {DeadlineOf(*waiting.event), waiting.event->sequence, waiting.turn};
}

void EventQueue::Insert(const Waiting& waiting) {
    m_delivery.emplace(DeliveryKey(waiting), waiting);
    m_discard.emplace(DiscardKey(waiting), waiting);
    if (waiting.event->expires) {
        m_deadline.emplace(DeadlineKey(waiting), waiting);
    }
    m_bytes += waiting.event->bytes;
}

/// By value: what is passed may lie in one of the maps.
EventPtr EventQueue::Take(Waiting waiting) {
    m_delivery.erase(DeliveryKey(waiting));
    m_discard.erase(DiscardKey(waiting));
    m_deadline.erase(DeadlineKey(waiting));
    m_bytes -= waiting.event->bytes;
    return std::move(waiting.event);
}

std::vector<EventPtr> EventQueue::MakeRoom() {
    std::vector<EventPtr> discarded;
    while (m_policy.max_events > 0 && Size() > m_policy.max_events) {
        discarded.push_back(Take(m_discard.begin()->second));
    }
    return discarded;
}

std::vector<EventPtr> EventQueue::Push(EventPtr event) {
    Insert({std::move(event), m_next_turn++});
    return MakeRoom();
}

std::vector<EventPtr> EventQueue::Return(EventPtr event) {
    Insert({std::move(event), --m_front_turn});
    return MakeRoom();
}

EventPtr EventQueue::Pop(Time now, std::vector<EventPtr>& expired) {
    std::vector<EventPtr> late = Expire(now);
    expired.insert(expired.end(), late.begin(), late.end());
    return Empty() ? nullptr : Take(m_delivery.begin()->second);
}

std::vector<EventPtr> EventQueue::Expire(Time now) {
    std::vector<EventPtr> expired;
    while (!m_deadline.empty() && *m_deadline.begin()->second.event->expires <= now) {
        expired.push_back(Take(m_deadline.begin()->second));
    }
    return expired;
}

EventPtr EventQueue::DiscardOne() {
    return Empty() ? nullptr : Take(m_discard.begin()->second);
}

std::vector<EventPtr> EventQueue::Clear() {
    std::vector<EventPtr> all;
    all.reserve(Size());
    for (auto& [key, waiting] : m_delivery) {
        all.push_back(std::move(waiting.event));
    }
    m_delivery.clear();
    m_discard.clear();
    m_deadline.clear();
    m_bytes = 0;
    return all;
}

std::vector<EventPtr> EventQueue::SetPolicy(const QueuePolicy& policy) {
    const Ordered waiting = std::exchange(m_delivery, {});
    m_discard.clear();
    m_deadline.clear();
    m_bytes = 0;
    m_policy = policy;
    for (const auto& [key, one] : waiting) {
        Insert(one);
    }
    return MakeRoom();
}

}  // namespace qv_notify
