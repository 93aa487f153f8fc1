#include "services/notify/servants/admin_parts.h"
#include "services/notify/servants/admin_servants.h"
#include "services/notify/servants/repository_ids.h"

namespace qv_notify {

CosNotifyChannelAdmin::EventChannel_ptr ConsumerAdminServant::MyChannel() {
    const auto lock = Lock();
    return Refer<CosNotifyChannelAdmin::EventChannel>(m_node->Channel()->Path(), kChannelType);
}

CosNotifyChannelAdmin::InterFilterGroupOperator ConsumerAdminServant::MyOperator() {
    return OperatorOf(*m_node);
}

CosNotifyFilter::MappingFilter_ptr ConsumerAdminServant::priority_filter() {
    return CosNotifyFilter::MappingFilter::_nil();
}

void ConsumerAdminServant::priority_filter(CosNotifyFilter::MappingFilter_ptr) {
    RaiseNotOffered(Service(), "a mapping filter (priority_filter)");
}

CosNotifyFilter::MappingFilter_ptr ConsumerAdminServant::lifetime_filter() {
    return CosNotifyFilter::MappingFilter::_nil();
}

void ConsumerAdminServant::lifetime_filter(CosNotifyFilter::MappingFilter_ptr) {
    RaiseNotOffered(Service(), "a mapping filter (lifetime_filter)");
}

CosNotifyChannelAdmin::ProxyIDSeq* ConsumerAdminServant::pull_suppliers() {
    return new CosNotifyChannelAdmin::ProxyIDSeq;
}

CosNotifyChannelAdmin::ProxyIDSeq* ConsumerAdminServant::push_suppliers() {
    const auto lock = Lock();
    return IdsOf<CosNotifyChannelAdmin::ProxyIDSeq>(m_node->Proxies());
}

CosNotifyChannelAdmin::ProxySupplier_ptr ConsumerAdminServant::get_proxy_supplier(
    CosNotifyChannelAdmin::ProxyID proxy_id) {
    const auto lock = Lock();
    return Refer<CosNotifyChannelAdmin::ProxySupplier>(RequireProxy(*m_node, proxy_id)->Path(),
                                                       kProxySupplierType);
}

CosNotifyChannelAdmin::ProxySupplier_ptr ConsumerAdminServant::obtain_notification_pull_supplier(
    CosNotifyChannelAdmin::ClientType, CORBA::Long&) {
    RaiseNotOffered(Service(), "obtain_notification_pull_supplier");
}

CosNotifyChannelAdmin::ProxySupplier_ptr ConsumerAdminServant::obtain_notification_push_supplier(
    CosNotifyChannelAdmin::ClientType ctype, CORBA::Long& proxy_id) {
    const auto lock = Lock();
    const std::shared_ptr<ProxyNode> proxy = ObtainProxy(*m_node, ctype);
    proxy_id = proxy->Id();
    return Refer<CosNotifyChannelAdmin::ProxySupplier>(proxy->Path(), kProxySupplierType);
}

void ConsumerAdminServant::subscription_change(const CosNotification::EventTypeSeq& added,
                                               const CosNotification::EventTypeSeq& removed) {
    const auto lock = Lock();
    m_node->ChangeTypes(NamesOf(added), NamesOf(removed));
}

void ConsumerAdminServant::destroy() {
    const auto lock = Lock();
    DestroyAdmin(*m_node);
}

CosEventChannelAdmin::ProxyPushSupplier_ptr ConsumerAdminServant::obtain_push_supplier() {
    RaiseNotOffered(Service(), "obtain_push_supplier");
}

CosEventChannelAdmin::ProxyPullSupplier_ptr ConsumerAdminServant::obtain_pull_supplier() {
    RaiseNotOffered(Service(), "obtain_pull_supplier");
}

}  // namespace qv_notify
