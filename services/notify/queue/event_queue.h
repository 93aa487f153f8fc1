#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <tuple>
#include <vector>

#include "services/notify/properties/queue_policy.h"
#include "services/notify/properties/service_time.h"
#include "services/notify/queue/event.h"

namespace qv_notify {

/// The events that wait for one consumer, in the order in which it gets them. Events that are equal by the
/// order in force keep the order of their arrival, which is that of their sequence numbers and, for the same
/// number, that of Push. Each operation takes logarithmic time for each event that it touches.
/// It has no lock: the owner sees to it that one thread at a time uses it.
class EventQueue {
  public:
    explicit EventQueue(const QueuePolicy& policy);

    /// Queues an event. Returns what had to go so that there are not too many; that may be the event itself.
    std::vector<EventPtr> Push(EventPtr event);

    /// Takes the next event; null when there is none. Events that expire at or before `now` are appended to
    /// `expired` instead.
    EventPtr Pop(Time now, std::vector<EventPtr>& expired);

    /// Puts back an event that Pop gave and that could not be delivered, in front of those that are equal by
    /// the order in force. Of several, the one that Pop gave last has to be put back first. Returns what had
    /// to go, as Push does.
    std::vector<EventPtr> Return(EventPtr event);

    /// Takes out all events that expire at or before `now`.
    std::vector<EventPtr> Expire(Time now);

    /// Takes out the event that goes first when there are too many; null when there is none.
    EventPtr DiscardOne();

    /// Takes out everything, in the order of delivery.
    std::vector<EventPtr> Clear();

    /// Re-sorts the events. Returns what had to go, as Push does.
    std::vector<EventPtr> SetPolicy(const QueuePolicy& policy);

    const QueuePolicy& Policy() const { return m_policy; }
    std::size_t Size() const { return m_delivery.size(); }
    bool Empty() const { return m_delivery.empty(); }
    /// The memory of the events, which other queues may share.
    std::size_t Bytes() const { return m_bytes; }

  private:
    /// What the order goes by, the sequence number, and the turn in which it was queued.
    using Key = std::tuple<std::int64_t, std::int64_t, std::int64_t>;
    struct Waiting {
        EventPtr event;
        std::int64_t turn = 0;
    };
    using Ordered = std::map<Key, Waiting>;

    Key DeliveryKey(const Waiting& waiting) const;
    Key DiscardKey(const Waiting& waiting) const;
    static Key DeadlineKey(const Waiting& waiting);
    void Insert(const Waiting& waiting);
    EventPtr Take(Waiting waiting);
    std::vector<EventPtr> MakeRoom();

    QueuePolicy m_policy;
    Ordered m_delivery;  // all events; begin() is the next to be delivered
    Ordered m_discard;   // all events; begin() is the first to be discarded
    Ordered m_deadline;  // those that expire; begin() is the first that does
    std::int64_t m_next_turn = 0;
    std::int64_t m_front_turn = 0;
    std::size_t m_bytes = 0;
};

}  // namespace qv_notify
