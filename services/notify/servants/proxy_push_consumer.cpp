#include "services/notify/servants/proxy_push_consumer.h"

#include <utility>

#include "services/notify/servants/repository_ids.h"

namespace qv_notify {

CosNotifyChannelAdmin::SupplierAdmin_ptr ProxyPushConsumer::MyAdmin() {
    const auto lock = Lock();
    return Refer<CosNotifyChannelAdmin::SupplierAdmin>(m_node->Admin()->Path(), kSupplierAdminType);
}

CosNotification::EventTypeSeq* ProxyPushConsumer::obtain_subscription_types(
    CosNotifyChannelAdmin::ObtainInfoMode mode) {
    const auto lock = Lock();
    m_node->WantUpdates(UpdatesWanted(mode));
    return SequenceOf(TypesWanted(mode) ? m_node->Channel().Subscribed() : std::vector<EventTypeName>());
}

void ProxyPushConsumer::connect_structured_push_supplier(
    CosNotifyComm::StructuredPushSupplier_ptr push_supplier) {
    const CORBA::String_var peer = Service().Orb()->object_to_string(push_supplier);
    const auto lock = Lock();
    if (!m_node->Data().peer.empty()) {
        throw CosEventChannelAdmin::AlreadyConnected();
    }
    ProxyData data = m_node->Data();
    data.peer = peer.in();
    m_node->SetData(std::move(data));
    m_node->ConnectPeer(push_supplier);
}

void ProxyPushConsumer::offer_change(const CosNotification::EventTypeSeq& added,
                                     const CosNotification::EventTypeSeq& removed) {
    const auto lock = Lock();
    m_node->ChangeTypes(NamesOf(added), NamesOf(removed));
}

void ProxyPushConsumer::push_structured_event(const CosNotification::StructuredEvent& notification) {
    const std::shared_ptr<const SupplierGate> gate = m_node->Gate();
    if (!gate->connected) {
        throw CosEventComm::Disconnected();
    }
    if (!PassesBoth(gate->and_operator, gate->admin_filters, gate->filters, notification)) {
        return;
    }
    if (m_node->TakeRepetition(notification)) {
        Service().Log().Tell(m_node->Path(),
                             "the supplier of proxy " + m_node->Path() +
                                 " pushed an event again that was kept before the restart; it "
                                 "is not delivered twice");
        return;
    }
    m_node->Channel().Traffic().Accept(notification, m_node->Path(), gate->qos);
}

void ProxyPushConsumer::disconnect_structured_push_consumer() {
    const auto lock = Lock();
    m_node->Admin()->DropProxy(m_node->Id());
}

}  // namespace qv_notify
