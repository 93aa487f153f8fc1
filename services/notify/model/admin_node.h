// A consumer or supplier admin, apart from its servant.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "services/notify/channel/type_set.h"
#include "services/notify/model/channel_node.h"
#include "services/notify/model/filter_links.h"

namespace qv_notify {

class ProxyNode;

/// What clients can change of an admin.
struct AdminData {
    PropertyValues qos;
    TypeSet types;  ///< what new proxies are subscribed to, or what is offered for all of them
    FilterLinks filters;
};

/// The types after a change; raises CORBA::IMP_LIMIT where they are more than TypeSet::kMost.
TypeSet Changed(TypeSet types, const std::vector<EventTypeName>& added,
                const std::vector<EventTypeName>& removed);

/// Guarded by the channel's mutex, all of it that changes.
class AdminNode : public std::enable_shared_from_this<AdminNode> {
  public:
    AdminNode(std::shared_ptr<ChannelNode> channel, bool for_consumers, std::int32_t id, bool and_operator);

    const std::shared_ptr<ChannelNode>& Channel() const { return m_channel; }
    bool ForConsumers() const { return m_for_consumers; }
    std::int32_t Id() const { return m_id; }
    bool AndOperator() const { return m_and_operator; }
    const std::string& Path() const { return m_path; }

    bool Alive() const { return m_alive; }
    const AdminData& Data() const { return m_data; }
    /// What holds here: the admin's properties, and the channel's for the others.
    PropertyValues Holding() const;
    /// Takes the changed data, once they are kept. Raises CORBA::NO_RESOURCES when they can't be, and changes
    /// nothing.
    void SetData(AdminData data);
    void Restore(const AdminState& state);
    void Save() const { Keep(m_data); }
    /// Takes notice that something above has changed, or a filter or proxy.
    void Refresh();

    /// Changes what proxies are subscribed to, or what is offered. Raises as SetData does, and, before
    /// anything is changed, CORBA::IMP_LIMIT for more than TypeSet::kMost types here or at a proxy.
    void ChangeTypes(const std::vector<EventTypeName>& added, const std::vector<EventTypeName>& removed);

    /// A new structured proxy; raises as SetData does.
    std::shared_ptr<ProxyNode> MakeProxy();
    void RestoreProxy(const ProxyState& state);
    std::shared_ptr<ProxyNode> FindProxy(std::int32_t id) const;
    const std::map<std::int32_t, std::shared_ptr<ProxyNode>>& Proxies() const { return m_proxies; }
    /// Raises CORBA::NO_RESOURCES when it can't be forgotten, and changes nothing then.
    void DropProxy(std::int32_t id);
    /// Drops a proxy whose consumer is gone. Raises as DropProxy does, but nothing is collected for that
    /// consumer any more even then; to be called again.
    void LoseProxy(std::int32_t id);

    /// Ends it with its proxies, without forgetting what is kept of them.
    void End();

  private:
    void Keep(const AdminData& data) const;

    const std::shared_ptr<ChannelNode> m_channel;
    const bool m_for_consumers;
    const std::int32_t m_id;
    const bool m_and_operator;
    const std::string m_path;

    bool m_alive = true;
    AdminData m_data;
    std::map<std::int32_t, std::shared_ptr<ProxyNode>> m_proxies;
};

}  // namespace qv_notify
