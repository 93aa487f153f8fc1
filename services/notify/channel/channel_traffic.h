// The events of one channel, from its suppliers to its consumers.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "services/notify/channel/held_events.h"
#include "services/notify/channel/intake.h"
#include "services/notify/properties/property_values.h"

namespace qv_notify {

/// What a channel holds at most when its own properties don't say less.
struct ChannelLimits {
    std::size_t max_events = 0;  ///< 0: no limit
    std::size_t max_bytes = 0;   ///< of events; 0: no limit
};

/// Lets events into a channel. Any thread may call.
class ChannelTraffic {
  public:
    struct Surroundings {
        /// All outlive the channel, and the intake, which the pool may share until it is stopped.
        WorkPool* intake_pool = nullptr;
        Store* store = nullptr;  ///< null where nothing is kept
        OperatorLog* log = nullptr;
        ChannelLimits limits;
    };

    ChannelTraffic(std::string channel, const Surroundings& around);

    /// The properties in force; the admin properties beside the QoS.
    void SetProperties(const PropertyValues& qos, const PropertyValues& admin);

    /// Takes an event of the proxy at path `supplier`, for which `qos` holds. Returns when the channel has
    /// it, and the store too, where it is to be kept. Raises CORBA::IMP_LIMIT when the channel is full and
    /// rejects events, or is full of kept events that have not been handed to its consumers yet;
    /// CORBA::NO_RESOURCES when the event can't be kept.
    void Accept(const CosNotification::StructuredEvent& event, const std::string& supplier,
                const PropertyValues& qos);
    /// An event kept from an earlier run: for the consumers of `feeds`, or still to be dispatched when it is
    /// null. `qos` is what holds for its supplier.
    void Restore(const StoredEvent& stored, const PropertyValues& qos,
                 const std::vector<std::shared_ptr<Feed>>* feeds);

    Routes& Destinations() { return *m_routes; }
    const HeldEvents& Held() const { return *m_held; }
    std::size_t IntakeDepth() const { return m_intake->Depth(); }
    void Close();

  private:
    struct Properties {
        ChannelLimits limits;
        bool reject = false;
        bool persistent = false;
    };

    std::shared_ptr<const Properties> Current() const;
    void MakeRoom(const Properties& properties);
    [[noreturn]] void Reject(const std::string& end_of_sentence) const;
    bool Full(const Properties& properties) const;
    std::int64_t NumberOfUnkept();
    void RaiseLastTo(std::int64_t sequence);
    std::int64_t Keep(const CosNotification::StructuredEvent& event, const std::string& supplier,
                      Time arrived);

    const std::string m_path;
    const Surroundings m_around;
    const std::shared_ptr<Routes> m_routes = std::make_shared<Routes>();
    const std::shared_ptr<HeldEvents> m_held = std::make_shared<HeldEvents>();
    const std::shared_ptr<Intake> m_intake;

    mutable std::mutex m_mutex;
    std::shared_ptr<const Properties> m_properties = std::make_shared<Properties>();
    std::atomic<std::int64_t> m_last_sequence{0};
};

}  // namespace qv_notify
