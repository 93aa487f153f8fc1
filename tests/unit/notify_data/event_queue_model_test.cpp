// The queue against a list that is searched from end to end for each operation.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tests/unit/notify_data/queue_fixture.h"

namespace {

using namespace qv_notify_test;
using qv_notify::Discard;
using qv_notify::EventPtr;
using qv_notify::EventQueue;
using qv_notify::Order;
using qv_notify::QueuePolicy;
using qv_notify::Time;

class Model {
  public:
    explicit Model(const QueuePolicy& policy) : m_policy(policy) {}

    std::vector<EventPtr> Push(const EventPtr& event) {
        m_events.push_back(event);
        return MakeRoom();
    }

    EventPtr Pop(Time now, std::vector<EventPtr>& expired) {
        for (const EventPtr& late : Expire(now)) {
            expired.push_back(late);
        }
        return Take([this](const EventPtr& a, const EventPtr& b) { return DeliveredBefore(a, b); });
    }

    std::vector<EventPtr> Expire(Time now) {
        std::vector<EventPtr> expired;
        for (const EventPtr& event : m_events) {
            if (event->expires && *event->expires <= now) {
                expired.push_back(event);
            }
        }
        std::sort(expired.begin(), expired.end(), [](const EventPtr& a, const EventPtr& b) {
            return *a->expires != *b->expires ? *a->expires < *b->expires : a->sequence < b->sequence;
        });
        for (const EventPtr& event : expired) {
            m_events.erase(std::find(m_events.begin(), m_events.end(), event));
        }
        return expired;
    }

    std::vector<EventPtr> SetPolicy(const QueuePolicy& policy) {
        m_policy = policy;
        return MakeRoom();
    }

    std::size_t Size() const { return m_events.size(); }
    std::size_t Bytes() const {
        std::size_t bytes = 0;
        for (const EventPtr& event : m_events) {
            bytes += event->bytes;
        }
        return bytes;
    }

  private:
    static Time Deadline(const EventPtr& event) { return event->expires.value_or(Time::max()); }

    bool DeliveredBefore(const EventPtr& a, const EventPtr& b) const {
        if (m_policy.order == Order::kPriority && a->priority != b->priority) {
            return a->priority > b->priority;
        }
        if (m_policy.order == Order::kDeadline && Deadline(a) != Deadline(b)) {
            return Deadline(a) < Deadline(b);
        }
        return a->sequence < b->sequence;
    }

    bool DiscardedBefore(const EventPtr& a, const EventPtr& b) const {
        if (m_policy.discard == Discard::kLifo) {
            return a->sequence > b->sequence;
        }
        if (m_policy.discard == Discard::kPriority && a->priority != b->priority) {
            return a->priority < b->priority;
        }
        if (m_policy.discard == Discard::kDeadline && Deadline(a) != Deadline(b)) {
            return Deadline(a) < Deadline(b);
        }
        return a->sequence < b->sequence;
    }

    std::vector<EventPtr> MakeRoom() {
        std::vector<EventPtr> discarded;
        while (m_policy.max_events > 0 && m_events.size() > m_policy.max_events) {
            discarded.push_back(
                Take([this](const EventPtr& a, const EventPtr& b) { return DiscardedBefore(a, b); }));
        }
        return discarded;
    }

    template <class Before>
    EventPtr Take(Before before) {
        const auto first = std::min_element(m_events.begin(), m_events.end(), before);
        if (first == m_events.end()) {
            return nullptr;
        }
        const EventPtr event = *first;
        m_events.erase(first);
        return event;
    }

    QueuePolicy m_policy;
    std::vector<EventPtr> m_events;
};

class Comparison {
  public:
    explicit Comparison(unsigned seed)
        : m_random(seed), m_policy(AnyPolicy()), m_queue(m_policy), m_model(m_policy) {}

    void Step() {
        const int kind = Number(0, 99);
        if (kind < 50) {
            const EventPtr event = AnyEvent();
            EXPECT_EQ(m_queue.Push(event), m_model.Push(event));
        } else if (kind < 80) {
            Pop();
        } else if (kind < 90 && !m_popped.empty()) {
            const EventPtr event = m_popped.back();
            m_popped.pop_back();
            EXPECT_EQ(m_queue.Return(event), m_model.Push(event));
        } else if (kind < 98) {
            m_now += std::chrono::seconds(Number(0, 3));
            EXPECT_EQ(m_queue.Expire(m_now), m_model.Expire(m_now));
        } else {
            m_policy = AnyPolicy();
            EXPECT_EQ(m_queue.SetPolicy(m_policy), m_model.SetPolicy(m_policy));
        }
        EXPECT_EQ(m_queue.Size(), m_model.Size());
        EXPECT_EQ(m_queue.Bytes(), m_model.Bytes());
    }

  private:
    int Number(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }

    QueuePolicy AnyPolicy() {
        return {static_cast<Order>(Number(0, 3)), static_cast<Discard>(Number(0, 4)),
                static_cast<std::size_t>(Number(0, 12))};
    }

    EventPtr AnyEvent() {
        std::optional<Time> expires;
        if (Number(0, 2) > 0) {
            expires = m_now + std::chrono::seconds(Number(0, 10));
        }
        return MakeEvent(++m_sequence, static_cast<std::int16_t>(Number(-2, 2)), expires);
    }

    void Pop() {
        std::vector<EventPtr> expired;
        std::vector<EventPtr> expected;
        const EventPtr event = m_queue.Pop(m_now, expired);
        EXPECT_EQ(event, m_model.Pop(m_now, expected));
        EXPECT_EQ(expired, expected);
        if (event) {
            m_popped.push_back(event);
        }
    }

    std::mt19937 m_random;
    QueuePolicy m_policy;
    EventQueue m_queue;
    Model m_model;
    Time m_now = kNow;
    std::int64_t m_sequence = 0;
    std::vector<EventPtr> m_popped;
};

TEST(EventQueueModel, BehavesAsTheModel) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        Comparison comparison(seed);
        for (int step = 0; step < 1000; ++step) {
            comparison.Step();
            ASSERT_FALSE(HasFailure()) << "seed " << seed << ", step " << step;
        }
    }
}

}  // namespace
