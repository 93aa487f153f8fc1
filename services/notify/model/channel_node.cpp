#include "services/notify/model/channel_node.h"

#include <utility>

#include "services/notify/model/admin_node.h"
#include "services/notify/model/proxy_node.h"

namespace qv_notify {

namespace {

ChannelTraffic::Surroundings Around(ServiceContext& service, bool persistent) {
    return {&service.IntakePool(), service.StoreFor(persistent), &service.Log(), service.Limits().channel};
}

}  // namespace

ChannelNode::ChannelNode(ServiceContext& service, const ChannelState& state, bool persistent)
    : m_service(service),
      m_id(state.id),
      m_path("c" + std::to_string(state.id)),
      m_persistent(persistent),
      m_traffic(m_path, Around(service, persistent)),
      m_qos(state.qos),
      m_admin(state.admin) {
    m_traffic.SetProperties(m_qos, m_admin);
}

void ChannelNode::Save() const {
    m_service.Keep(m_persistent, m_path, Text(ChannelState{m_id, m_qos, m_admin}));
}

void ChannelNode::SetQos(PropertyValues qos) {
    m_service.Keep(m_persistent, m_path, Text(ChannelState{m_id, qos, m_admin}));
    m_qos = std::move(qos);
    Apply();
}

void ChannelNode::SetAdminProperties(PropertyValues admin) {
    m_service.Keep(m_persistent, m_path, Text(ChannelState{m_id, m_qos, admin}));
    m_admin = std::move(admin);
    Apply();
}

void ChannelNode::Apply() {
    m_traffic.SetProperties(m_qos, m_admin);
    for (const auto* admins : {&m_consumer_admins, &m_supplier_admins}) {
        for (const auto& [id, admin] : *admins) {
            admin->Refresh();
        }
    }
}

std::shared_ptr<AdminNode> ChannelNode::MakeAdmin(bool for_consumers, bool and_operator) {
    auto& admins = for_consumers ? m_consumer_admins : m_supplier_admins;
    // The default admin is number 0.
    const std::int32_t id = admins.empty() ? 0 : m_service.NextNumber(m_path + "/admins");
    auto admin = std::make_shared<AdminNode>(shared_from_this(), for_consumers, id, and_operator);
    admin->Save();
    admins.emplace(id, admin);
    return admin;
}

void ChannelNode::RestoreAdmin(const AdminState& state) {
    auto admin =
        std::make_shared<AdminNode>(shared_from_this(), state.for_consumers, state.id, state.and_operator);
    (state.for_consumers ? m_consumer_admins : m_supplier_admins)[state.id] = admin;
    admin->Restore(state);
}

std::shared_ptr<AdminNode> ChannelNode::FindAdmin(bool for_consumers, std::int32_t id) const {
    const auto& admins = Admins(for_consumers);
    const auto found = admins.find(id);
    return found == admins.end() ? nullptr : found->second;
}

void ChannelNode::DropAdmin(bool for_consumers, std::int32_t id) {
    const std::shared_ptr<AdminNode> admin = FindAdmin(for_consumers, id);
    if (admin == nullptr) {
        return;
    }
    m_service.Forget(m_persistent, admin->Path());
    admin->End();
    (for_consumers ? m_consumer_admins : m_supplier_admins).erase(id);
    Withdraw(admin->Path());
}

std::size_t ChannelNode::Clients(bool consumers) const {
    std::size_t clients = 0;
    for (const auto& [id, admin] : Admins(consumers)) {
        clients += admin->Proxies().size();
    }
    return clients;
}

void ChannelNode::Offer(const std::string& path, const std::vector<EventTypeName>& types) {
    TellConsumers(m_offers.Set(path, types));
}

void ChannelNode::Subscribe(const std::string& path, const std::vector<EventTypeName>& types) {
    TellSuppliers(m_subscriptions.Set(path, types));
}

void ChannelNode::Withdraw(const std::string& path) {
    TellConsumers(m_offers.Remove(path));
    TellSuppliers(m_subscriptions.Remove(path));
}

void ChannelNode::TellConsumers(const TypeSet::Change& change) const {
    if (change.Empty()) {
        return;
    }
    const CosNotification::EventTypeSeq_var added = SequenceOf(change.added);
    const CosNotification::EventTypeSeq_var removed = SequenceOf(change.removed);
    for (const auto& [id, admin] : m_consumer_admins) {
        for (const auto& [proxy_id, proxy] : admin->Proxies()) {
            if (proxy->WantsUpdates()) {
                proxy->ConsumerFeed()->Announce(added.in(), removed.in());
            }
        }
    }
}

void ChannelNode::TellSuppliers(const TypeSet::Change& change) const {
    if (change.Empty()) {
        return;
    }
    for (const auto& [id, admin] : m_supplier_admins) {
        for (const auto& [proxy_id, proxy] : admin->Proxies()) {
            if (proxy->WantsUpdates()) {
                proxy->TellSupplier(change);
            }
        }
    }
}

void ChannelNode::Destroy() {
    m_service.Forget(m_persistent, m_path);
    m_alive = false;
    m_traffic.Close();
    for (auto* admins : {&m_consumer_admins, &m_supplier_admins}) {
        for (const auto& [id, admin] : *admins) {
            admin->End();
        }
        admins->clear();
    }
    m_service.EndFiltersOf(m_path);
    m_service.Deactivate(m_path + "/ff", m_persistent);
    m_service.Deactivate(m_path, m_persistent);
}

}  // namespace qv_notify
