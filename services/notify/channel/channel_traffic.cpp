#include "services/notify/channel/channel_traffic.h"

#include <algorithm>
#include <utility>

#include "orb/event_argument.h"
#include "orb/event_octets.h"
#include "services/notify/properties/event_timing.h"

namespace qv_notify {

namespace {

// The lower of two limits, where 0 is none.
std::size_t Stricter(std::size_t one, std::size_t other) {
    return one == 0 || other == 0 ? std::max(one, other) : std::min(one, other);
}

struct Longest {
    Feed* feed = nullptr;
    std::size_t depth = 0;
};

Longest LongestOf(const Routes::Groups& groups) {
    Longest longest;
    for (const auto& [id, group] : groups) {
        for (const Destination& member : group->members) {
            if (const std::size_t own = member.feed->Depth(); own > longest.depth) {
                longest = {member.feed.get(), own};
            }
        }
    }
    return longest;
}

}  // namespace

ChannelTraffic::ChannelTraffic(std::string channel, const Surroundings& around)
    : m_path(std::move(channel)),
      m_around(around),
      m_intake(std::make_shared<Intake>(m_path, m_routes, *around.intake_pool, around.store, *around.log)) {}

void ChannelTraffic::SetProperties(const PropertyValues& qos, const PropertyValues& admin) {
    auto made = std::make_shared<Properties>();
    made->limits = m_around.limits;
    made->limits.max_events =
        Stricter(made->limits.max_events,
                 static_cast<std::size_t>(ValueOf<std::int32_t>(admin, CosNotification::MaxQueueLength, 0)));
    made->reject = ValueOf<bool>(admin, CosNotification::RejectNewEvents, false);
    made->persistent =
        m_around.store != nullptr &&
        ValueOf<std::int16_t>(qos, CosNotification::EventReliability, 0) == CosNotification::Persistent;
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_properties = std::move(made);
}

std::shared_ptr<const ChannelTraffic::Properties> ChannelTraffic::Current() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_properties;
}

void ChannelTraffic::Accept(const CosNotification::StructuredEvent& event, const std::string& supplier,
                            const PropertyValues& qos) {
    const std::shared_ptr<const Properties> properties = Current();
    if (Full(*properties)) {
        MakeRoom(*properties);
    }
    auto made = std::make_unique<Event>();
    qv_orb::TakeEvent(event, made->body);
    made->bytes = MemoryOf(made->body);
    made->arrived = std::chrono::system_clock::now();
    const EventTiming timing = ReadEventTiming(made->body, qos, made->arrived);
    made->priority = timing.priority;
    made->expires = timing.expires;
    made->kept = properties->persistent && timing.persistent_wanted;
    made->sequence = made->kept ? Keep(made->body, supplier, made->arrived) : NumberOfUnkept();
    m_intake->Add(HeldEvents::Hold(m_held, std::move(made)));
}

// Beside numbers of the store, an event that isn't kept shares that of the last one that is: queues keep the
// order of such, and what comes next from the store is behind both.
std::int64_t ChannelTraffic::NumberOfUnkept() {
    return m_around.store != nullptr ? m_last_sequence.load() : m_last_sequence.fetch_add(1) + 1;
}

void ChannelTraffic::RaiseLastTo(std::int64_t sequence) {
    std::int64_t last = m_last_sequence.load();
    while (last < sequence && !m_last_sequence.compare_exchange_weak(last, sequence)) {
    }
}

bool ChannelTraffic::Full(const Properties& properties) const {
    const ChannelLimits& limits = properties.limits;
    return (limits.max_events != 0 && m_held->Events() >= limits.max_events) ||
           (limits.max_bytes != 0 && m_held->Bytes() >= limits.max_bytes);
}

// The longest queue holds what nobody else waits for any more; the intake is one of them.
void ChannelTraffic::MakeRoom(const Properties& properties) {
    if (properties.reject) {
        Reject(
            " bytes) and rejects new events with IMP_LIMIT until its consumers have taken some. See which "
            "consumer is slow.");
    }
    const std::shared_ptr<const Routes::Groups> groups = m_routes->Get();
    while (Full(properties)) {
        const Longest longest = LongestOf(*groups);
        if (m_intake->Depth() > longest.depth) {
            const Intake::Discarded discarded = m_intake->DiscardOne();
            if (discarded == Intake::Discarded::kOnlyKeptOnesWait) {
                Reject(
                    " bytes) and rejects new events with IMP_LIMIT until those that are kept have been "
                    "handed to its consumers. Their filters take long, or its store can't be written.");
            }
            if (discarded == Intake::Discarded::kNothingWaits) {
                return;  // feeds are about to have it
            }
        } else if (longest.feed == nullptr || !longest.feed->DiscardOne()) {
            return;  // what there is, is on its way to a consumer
        }
    }
}

void ChannelTraffic::Reject(const std::string& end_of_sentence) const {
    m_around.log->Tell(m_path + " full", "channel " + m_path + " is full (" +
                                             std::to_string(m_held->Events()) + " events, " +
                                             std::to_string(m_held->Bytes()) + end_of_sentence);
    throw CORBA::IMP_LIMIT(0, CORBA::COMPLETED_NO);
}

std::int64_t ChannelTraffic::Keep(const CosNotification::StructuredEvent& event, const std::string& supplier,
                                  Time arrived) {
    try {
        const std::int64_t sequence =
            m_around.store->AddEvent(m_path, supplier, qv_orb::EventToOctets(event), arrived);
        RaiseLastTo(sequence);
        return sequence;
    } catch (const StoreError& error) {
        m_around.log->Tell(m_path + " store", std::string(error.what()) + " Events pushed into channel " +
                                                  m_path +
                                                  " are refused with NO_RESOURCES until it works again.");
        throw CORBA::NO_RESOURCES(0, CORBA::COMPLETED_NO);
    }
}

void ChannelTraffic::Restore(const StoredEvent& stored, const PropertyValues& qos,
                             const std::vector<std::shared_ptr<Feed>>* feeds) {
    auto made = std::make_unique<Event>();
    qv_orb::EventFromOctets(stored.octets, made->body);
    made->sequence = stored.sequence;
    made->kept = true;
    RaiseLastTo(stored.sequence);
    made->bytes = MemoryOf(made->body);
    made->arrived = stored.arrived;
    const EventTiming timing = ReadEventTiming(made->body, qos, stored.arrived);
    made->priority = timing.priority;
    made->expires = timing.expires;
    const EventPtr event = HeldEvents::Hold(m_held, std::move(made));
    if (feeds == nullptr) {
        m_intake->Add(event);
        return;
    }
    for (const std::shared_ptr<Feed>& feed : *feeds) {
        feed->Add(event);
    }
}

void ChannelTraffic::Close() {
    m_intake->Close();
}

}  // namespace qv_notify
