#include "services/notify/model/admin_node.h"

#include <algorithm>
#include <utility>

#include "services/notify/model/proxy_node.h"

namespace qv_notify {

namespace {

std::string AdminPath(const ChannelNode& channel, bool for_consumers, std::int32_t id) {
    return channel.Path() + (for_consumers ? "/ca" : "/sa") + std::to_string(id);
}

}  // namespace

TypeSet Changed(TypeSet types, const std::vector<EventTypeName>& added,
                const std::vector<EventTypeName>& removed) {
    const std::size_t most =
        std::max(TypeSet::kMost, types.Types().size());  // whoever has more may take away
    types.Apply(added, removed);
    if (types.Types().size() > most) {
        throw CORBA::IMP_LIMIT(0, CORBA::COMPLETED_NO);
    }
    return types;
}

AdminNode::AdminNode(std::shared_ptr<ChannelNode> channel, bool for_consumers, std::int32_t id,
                     bool and_operator)
    : m_channel(std::move(channel)),
      m_for_consumers(for_consumers),
      m_id(id),
      m_and_operator(and_operator),
      m_path(AdminPath(*m_channel, for_consumers, id)) {
    if (for_consumers) {
        m_data.types = TypeSet::All();
    }
}

PropertyValues AdminNode::Holding() const {
    return Inherit(m_channel->Qos(), m_data.qos);
}

void AdminNode::Keep(const AdminData& data) const {
    AdminState state;
    state.id = m_id;
    state.for_consumers = m_for_consumers;
    state.and_operator = m_and_operator;
    state.qos = data.qos;
    state.types = data.types.Types();
    state.filters = data.filters.States();
    state.next_filter_id = data.filters.NextId();
    m_channel->Service().Keep(m_channel->Persistent(), m_path, Text(state));
}

void AdminNode::SetData(AdminData data) {
    Keep(data);
    m_data = std::move(data);
    Refresh();
}

void AdminNode::Restore(const AdminState& state) {
    m_data.qos = state.qos;
    m_data.types = TypeSet(state.types);
    m_data.filters.Restore(state.filters, state.next_filter_id,
                           [this](std::int32_t id) { return m_channel->Service().FilterOf(id); });
    if (!m_for_consumers && !state.types.empty()) {
        m_channel->RestoreOffer(m_path, state.types);
    }
}

void AdminNode::Refresh() {
    DestinationGroup group;
    group.and_operator = m_and_operator;
    group.filters = m_data.filters.List();
    for (const auto& [id, proxy] : m_proxies) {
        proxy->Refresh();
        if (m_for_consumers && !proxy->Data().peer.empty() && !proxy->Lost()) {
            group.members.push_back(
                {proxy->Path(), proxy->ConsumerFeed(), proxy->Data().types, proxy->Data().filters.List()});
        }
    }
    if (m_for_consumers) {
        m_channel->Traffic().Destinations().Replace(m_id, std::move(group));
    }
}

void AdminNode::ChangeTypes(const std::vector<EventTypeName>& added,
                            const std::vector<EventTypeName>& removed) {
    AdminData data = m_data;
    data.types = Changed(m_data.types, added, removed);
    if (m_for_consumers) {
        for (const auto& [id, proxy] : m_proxies) {
            Changed(proxy->Data().types, added, removed);  // before anything is changed
        }
    }
    SetData(std::move(data));
    if (!m_for_consumers) {
        m_channel->Offer(m_path, m_data.types.Types());
        return;
    }
    for (const auto& [id, proxy] : m_proxies) {
        proxy->ChangeTypes(added, removed);
    }
}

std::shared_ptr<ProxyNode> AdminNode::MakeProxy() {
    const std::int32_t id = m_channel->Service().NextNumber(m_channel->Path() + "/proxies");
    auto proxy = std::make_shared<ProxyNode>(shared_from_this(), id);
    ProxyData data = proxy->Data();
    if (m_for_consumers) {
        data.types = m_data.types;
    }
    proxy->SetData(std::move(data));
    m_proxies.emplace(id, proxy);
    return proxy;
}

void AdminNode::RestoreProxy(const ProxyState& state) {
    auto proxy = std::make_shared<ProxyNode>(shared_from_this(), state.id);
    m_proxies[state.id] = proxy;
    proxy->Restore(state);
}

std::shared_ptr<ProxyNode> AdminNode::FindProxy(std::int32_t id) const {
    const auto found = m_proxies.find(id);
    return found == m_proxies.end() ? nullptr : found->second;
}

void AdminNode::DropProxy(std::int32_t id) {
    const std::shared_ptr<ProxyNode> proxy = FindProxy(id);
    if (proxy == nullptr) {
        return;
    }
    m_channel->Service().Forget(m_channel->Persistent(), proxy->Path());
    m_proxies.erase(id);
    Refresh();
    proxy->End(false);
    m_channel->Withdraw(proxy->Path());
}

void AdminNode::LoseProxy(std::int32_t id) {
    const std::shared_ptr<ProxyNode> proxy = FindProxy(id);
    if (proxy != nullptr && !proxy->Lost()) {
        proxy->Lose();
        Refresh();
    }
    DropProxy(id);
}

void AdminNode::End() {
    m_alive = false;
    for (const auto& [id, proxy] : m_proxies) {
        m_channel->Withdraw(proxy->Path());
        proxy->End(true);
    }
    m_proxies.clear();
    if (m_for_consumers) {
        m_channel->Traffic().Destinations().Remove(m_id);
    }
    m_channel->Service().Deactivate(m_path, m_channel->Persistent());
}

}  // namespace qv_notify
