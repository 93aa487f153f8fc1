#include "services/notify/servants/admin_parts.h"
#include "services/notify/servants/admin_servants.h"
#include "services/notify/servants/repository_ids.h"

namespace qv_notify {

CosNotifyChannelAdmin::EventChannel_ptr SupplierAdminServant::MyChannel() {
    const auto lock = Lock();
    return Refer<CosNotifyChannelAdmin::EventChannel>(m_node->Channel()->Path(), kChannelType);
}

CosNotifyChannelAdmin::InterFilterGroupOperator SupplierAdminServant::MyOperator() {
    return OperatorOf(*m_node);
}

CosNotifyChannelAdmin::ProxyIDSeq* SupplierAdminServant::pull_consumers() {
    return new CosNotifyChannelAdmin::ProxyIDSeq;
}

CosNotifyChannelAdmin::ProxyIDSeq* SupplierAdminServant::push_consumers() {
    const auto lock = Lock();
    return IdsOf<CosNotifyChannelAdmin::ProxyIDSeq>(m_node->Proxies());
}

CosNotifyChannelAdmin::ProxyConsumer_ptr SupplierAdminServant::get_proxy_consumer(
    CosNotifyChannelAdmin::ProxyID proxy_id) {
    const auto lock = Lock();
    return Refer<CosNotifyChannelAdmin::ProxyConsumer>(RequireProxy(*m_node, proxy_id)->Path(),
                                                       kProxyConsumerType);
}

CosNotifyChannelAdmin::ProxyConsumer_ptr SupplierAdminServant::obtain_notification_pull_consumer(
    CosNotifyChannelAdmin::ClientType, CORBA::Long&) {
    RaiseNotOffered(Service(), "obtain_notification_pull_consumer");
}

CosNotifyChannelAdmin::ProxyConsumer_ptr SupplierAdminServant::obtain_notification_push_consumer(
    CosNotifyChannelAdmin::ClientType ctype, CORBA::Long& proxy_id) {
    const auto lock = Lock();
    const std::shared_ptr<ProxyNode> proxy = ObtainProxy(*m_node, ctype);
    proxy_id = proxy->Id();
    return Refer<CosNotifyChannelAdmin::ProxyConsumer>(proxy->Path(), kProxyConsumerType);
}

void SupplierAdminServant::offer_change(const CosNotification::EventTypeSeq& added,
                                        const CosNotification::EventTypeSeq& removed) {
    const auto lock = Lock();
    m_node->ChangeTypes(NamesOf(added), NamesOf(removed));
}

void SupplierAdminServant::destroy() {
    const auto lock = Lock();
    DestroyAdmin(*m_node);
}

CosEventChannelAdmin::ProxyPushConsumer_ptr SupplierAdminServant::obtain_push_consumer() {
    RaiseNotOffered(Service(), "obtain_push_consumer");
}

CosEventChannelAdmin::ProxyPullConsumer_ptr SupplierAdminServant::obtain_pull_consumer() {
    RaiseNotOffered(Service(), "obtain_pull_consumer");
}

}  // namespace qv_notify
