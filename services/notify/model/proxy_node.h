// A proxy, apart from its servant.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "services/notify/model/admin_node.h"
#include "services/notify/model/repetition_memory.h"
#include "services/notify/model/supplier_port.h"

namespace qv_notify {

/// What clients can change of a proxy.
struct ProxyData {
    PropertyValues qos;
    TypeSet types;  ///< subscribed or offered
    FilterLinks filters;
    std::string peer;  ///< the reference of what is connected; empty: nothing
    bool suspended = false;
};

/// What an event of a supplier has to pass.
struct SupplierGate {
    bool connected = false;
    bool and_operator = true;
    FilterList admin_filters;
    FilterList filters;
    PropertyValues qos;  ///< what holds for its events as far as they don't say otherwise
};

/// One proxy of an admin: with a feed where consumers connect, with a gate where suppliers do. Guarded by the
/// channel's mutex, except for Gate and TakeRepetition.
class ProxyNode : public std::enable_shared_from_this<ProxyNode> {
  public:
    ProxyNode(std::shared_ptr<AdminNode> admin, std::int32_t id);

    const std::shared_ptr<AdminNode>& Admin() const { return m_admin; }
    ChannelNode& Channel() const { return *m_admin->Channel(); }
    std::int32_t Id() const { return m_id; }
    const std::string& Path() const { return m_path; }

    bool Alive() const { return m_alive; }
    /// Its consumer is gone: it takes no events any more, and is about to be ended.
    bool Lost() const { return m_lost; }
    void Lose();
    const ProxyData& Data() const { return m_data; }
    PropertyValues Holding() const;
    /// Takes the changed data, once they are kept. Raises CORBA::NO_RESOURCES when they can't be, and changes
    /// nothing.
    void SetData(ProxyData data);
    void Restore(const ProxyState& state);
    /// Takes notice that something above or a filter has changed.
    void Refresh();
    /// Raises as SetData does, and CORBA::IMP_LIMIT for more than TypeSet::kMost types.
    void ChangeTypes(const std::vector<EventTypeName>& added, const std::vector<EventTypeName>& removed);

    /// Connects what the reference in Data().peer names.
    void ConnectPeer(CORBA::Object_ptr peer);

    /// Where consumers connect; null otherwise.
    const std::shared_ptr<Feed>& ConsumerFeed() const { return m_feed; }
    /// Whether its client is to be told when other clients offer or subscribe to other types.
    bool WantsUpdates() const { return m_wants_updates; }
    void WantUpdates(bool wanted) { m_wants_updates = wanted; }
    /// Tells the supplier what consumers have subscribed to.
    void TellSupplier(const TypeSet::Change& change) const;

    /// Any thread, without the mutex.
    std::shared_ptr<const SupplierGate> Gate() const;
    /// Any thread, without the mutex: whether the event is one that the supplier had got in just before the
    /// service ended, so that it pushes it again because it never had an answer. Each one is taken once.
    bool TakeRepetition(const CosNotification::StructuredEvent& event);

    /// Nothing goes through it any more. With `tell`, its client is told by the disconnect call of the
    /// standard.
    void End(bool tell);

  private:
    void Keep(const ProxyData& data) const;
    void MakeFeed();

    const std::shared_ptr<AdminNode> m_admin;
    const std::int32_t m_id;
    const std::string m_path;

    bool m_alive = true;
    bool m_lost = false;
    bool m_wants_updates = true;
    ProxyData m_data;
    CORBA::Object_var m_peer;
    std::shared_ptr<Feed> m_feed;
    std::shared_ptr<SupplierPort> m_supplier;

    mutable std::mutex m_gate_mutex;
    std::shared_ptr<const SupplierGate> m_gate = std::make_shared<SupplierGate>();
    RepetitionMemory m_repetitions;  // has a lock of its own
};

}  // namespace qv_notify
