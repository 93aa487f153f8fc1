#include "services/notify/servants/proxy_push_supplier.h"

#include <utility>

#include "services/notify/servants/repository_ids.h"

namespace qv_notify {

CosNotifyChannelAdmin::ConsumerAdmin_ptr ProxyPushSupplier::MyAdmin() {
    const auto lock = Lock();
    return Refer<CosNotifyChannelAdmin::ConsumerAdmin>(m_node->Admin()->Path(), kConsumerAdminType);
}

CosNotifyFilter::MappingFilter_ptr ProxyPushSupplier::priority_filter() {
    return CosNotifyFilter::MappingFilter::_nil();
}

void ProxyPushSupplier::priority_filter(CosNotifyFilter::MappingFilter_ptr) {
    RaiseNotOffered(Service(), "a mapping filter (priority_filter)");
}

CosNotifyFilter::MappingFilter_ptr ProxyPushSupplier::lifetime_filter() {
    return CosNotifyFilter::MappingFilter::_nil();
}

void ProxyPushSupplier::lifetime_filter(CosNotifyFilter::MappingFilter_ptr) {
    RaiseNotOffered(Service(), "a mapping filter (lifetime_filter)");
}

CosNotification::EventTypeSeq* ProxyPushSupplier::obtain_offered_types(
    CosNotifyChannelAdmin::ObtainInfoMode mode) {
    const auto lock = Lock();
    m_node->WantUpdates(UpdatesWanted(mode));
    return SequenceOf(TypesWanted(mode) ? m_node->Channel().Offered() : std::vector<EventTypeName>());
}

void ProxyPushSupplier::connect_structured_push_consumer(
    CosNotifyComm::StructuredPushConsumer_ptr push_consumer) {
    if (CORBA::is_nil(push_consumer)) {
        throw CORBA::BAD_PARAM(0, CORBA::COMPLETED_NO);
    }
    const CORBA::String_var peer = Service().Orb()->object_to_string(push_consumer);
    const auto lock = Lock();
    if (!m_node->Data().peer.empty()) {
        throw CosEventChannelAdmin::AlreadyConnected();
    }
    ProxyData data = m_node->Data();
    data.peer = peer.in();
    m_node->SetData(std::move(data));
    m_node->ConnectPeer(push_consumer);
    m_node->Channel().Subscribe(m_node->Path(), m_node->Data().types.Types());
}

void ProxyPushSupplier::suspend_connection() {
    const auto lock = Lock();
    if (m_node->Data().peer.empty()) {
        throw CosNotifyChannelAdmin::NotConnected();
    }
    if (m_node->Data().suspended) {
        throw CosNotifyChannelAdmin::ConnectionAlreadyInactive();
    }
    SetSuspended(true);
    m_node->ConsumerFeed()->Suspend();
}

void ProxyPushSupplier::resume_connection() {
    const auto lock = Lock();
    if (m_node->Data().peer.empty()) {
        throw CosNotifyChannelAdmin::NotConnected();
    }
    if (!m_node->Data().suspended) {
        throw CosNotifyChannelAdmin::ConnectionAlreadyActive();
    }
    SetSuspended(false);
    m_node->ConsumerFeed()->Resume();
}

void ProxyPushSupplier::SetSuspended(bool suspended) {
    ProxyData data = m_node->Data();
    data.suspended = suspended;
    m_node->SetData(std::move(data));
}

void ProxyPushSupplier::subscription_change(const CosNotification::EventTypeSeq& added,
                                            const CosNotification::EventTypeSeq& removed) {
    const auto lock = Lock();
    m_node->ChangeTypes(NamesOf(added), NamesOf(removed));
}

void ProxyPushSupplier::disconnect_structured_push_supplier() {
    const auto lock = Lock();
    m_node->Admin()->DropProxy(m_node->Id());
}

}  // namespace qv_notify
