// A channel, apart from its servant.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "services/notify/model/service_context.h"
#include "services/notify/model/type_exchange.h"

namespace qv_notify {

class AdminNode;

/// One channel and what is below it. The nodes are plain data: whoever uses one holds Mutex(), and holds it
/// across no call to a client. Admins and proxies keep their channel alive; Destroy breaks the circle.
class ChannelNode : public std::enable_shared_from_this<ChannelNode> {
  public:
    ChannelNode(ServiceContext& service, const ChannelState& state, bool persistent);

    ServiceContext& Service() const { return m_service; }
    std::int32_t Id() const { return m_id; }
    const std::string& Path() const { return m_path; }
    /// The channel is to outlive the process.
    bool Persistent() const { return m_persistent; }
    Capabilities Abilities() const { return m_service.CapabilitiesOf(m_persistent); }
    ChannelTraffic& Traffic() { return m_traffic; }
    std::mutex& Mutex() const { return m_mutex; }

    // All that follows is guarded by Mutex().

    bool Alive() const { return m_alive; }
    const PropertyValues& Qos() const { return m_qos; }
    const PropertyValues& AdminProperties() const { return m_admin; }
    /// Raise CORBA::NO_RESOURCES when they can't be kept, and then change nothing.
    void SetQos(PropertyValues qos);
    void SetAdminProperties(PropertyValues admin);
    void Save() const;

    /// Adds an admin; its id is given by the channel. Raises as SetQos does.
    std::shared_ptr<AdminNode> MakeAdmin(bool for_consumers, bool and_operator);
    void RestoreAdmin(const AdminState& state);
    /// Null when there is none.
    std::shared_ptr<AdminNode> FindAdmin(bool for_consumers, std::int32_t id) const;
    const std::map<std::int32_t, std::shared_ptr<AdminNode>>& Admins(bool for_consumers) const {
        return for_consumers ? m_consumer_admins : m_supplier_admins;
    }
    void DropAdmin(bool for_consumers, std::int32_t id);
    /// How many proxies there are on that side.
    std::size_t Clients(bool consumers) const;

    /// What the object at `path` offers; all consumers that want to know it are told of the change.
    void Offer(const std::string& path, const std::vector<EventTypeName>& types);
    void Subscribe(const std::string& path, const std::vector<EventTypeName>& types);
    void Withdraw(const std::string& path);
    /// What Offer and Subscribe have told everybody before the service was started anew.
    void RestoreOffer(const std::string& path, const std::vector<EventTypeName>& types) {
        m_offers.Set(path, types);
    }
    void RestoreSubscription(const std::string& path, const std::vector<EventTypeName>& types) {
        m_subscriptions.Set(path, types);
    }
    std::vector<EventTypeName> Offered() const { return m_offers.All(); }
    std::vector<EventTypeName> Subscribed() const { return m_subscriptions.All(); }

    /// Ends all that is below and forgets it. Raises as SetQos does.
    void Destroy();

  private:
    void Apply();
    void TellConsumers(const TypeSet::Change& change) const;
    void TellSuppliers(const TypeSet::Change& change) const;

    ServiceContext& m_service;
    const std::int32_t m_id;
    const std::string m_path;
    const bool m_persistent;
    ChannelTraffic m_traffic;

    mutable std::mutex m_mutex;
    bool m_alive = true;
    PropertyValues m_qos;
    PropertyValues m_admin;
    std::map<std::int32_t, std::shared_ptr<AdminNode>> m_consumer_admins;
    std::map<std::int32_t, std::shared_ptr<AdminNode>> m_supplier_admins;
    TypeExchange m_offers;
    TypeExchange m_subscriptions;
};

}  // namespace qv_notify
