// Consumer and supplier admins.
#pragma once

#include <orbsvcs/CosNotifyChannelAdminS.h>

#include "services/notify/servants/node_servant.h"

namespace qv_notify {

/// Any thread may call.
class ConsumerAdminServant final
    : public FilteringServant<POA_CosNotifyChannelAdmin::ConsumerAdmin, AdminNode, QosLevel::kAdmin> {
  public:
    using FilteringServant::FilteringServant;

    CosNotifyChannelAdmin::AdminID MyID() override { return m_node->Id(); }
    CosNotifyChannelAdmin::EventChannel_ptr MyChannel() override;
    CosNotifyChannelAdmin::InterFilterGroupOperator MyOperator() override;
    /// Mapping filters are not offered: nil, and setting one raises CORBA::NO_IMPLEMENT.
    CosNotifyFilter::MappingFilter_ptr priority_filter() override;
    void priority_filter(CosNotifyFilter::MappingFilter_ptr filter) override;
    CosNotifyFilter::MappingFilter_ptr lifetime_filter() override;
    void lifetime_filter(CosNotifyFilter::MappingFilter_ptr filter) override;

    CosNotifyChannelAdmin::ProxyIDSeq* pull_suppliers() override;
    CosNotifyChannelAdmin::ProxyIDSeq* push_suppliers() override;
    CosNotifyChannelAdmin::ProxySupplier_ptr get_proxy_supplier(
        CosNotifyChannelAdmin::ProxyID proxy_id) override;
    CosNotifyChannelAdmin::ProxySupplier_ptr obtain_notification_pull_supplier(
        CosNotifyChannelAdmin::ClientType ctype, CORBA::Long& proxy_id) override;
    CosNotifyChannelAdmin::ProxySupplier_ptr obtain_notification_push_supplier(
        CosNotifyChannelAdmin::ClientType ctype, CORBA::Long& proxy_id) override;
    void subscription_change(const CosNotification::EventTypeSeq& added,
                             const CosNotification::EventTypeSeq& removed) override;
    void destroy() override;

    CosEventChannelAdmin::ProxyPushSupplier_ptr obtain_push_supplier() override;
    CosEventChannelAdmin::ProxyPullSupplier_ptr obtain_pull_supplier() override;
};

/// Any thread may call.
class SupplierAdminServant final
    : public FilteringServant<POA_CosNotifyChannelAdmin::SupplierAdmin, AdminNode, QosLevel::kAdmin> {
  public:
    using FilteringServant::FilteringServant;

    CosNotifyChannelAdmin::AdminID MyID() override { return m_node->Id(); }
    CosNotifyChannelAdmin::EventChannel_ptr MyChannel() override;
    CosNotifyChannelAdmin::InterFilterGroupOperator MyOperator() override;

    CosNotifyChannelAdmin::ProxyIDSeq* pull_consumers() override;
    CosNotifyChannelAdmin::ProxyIDSeq* push_consumers() override;
    CosNotifyChannelAdmin::ProxyConsumer_ptr get_proxy_consumer(
        CosNotifyChannelAdmin::ProxyID proxy_id) override;
    CosNotifyChannelAdmin::ProxyConsumer_ptr obtain_notification_pull_consumer(
        CosNotifyChannelAdmin::ClientType ctype, CORBA::Long& proxy_id) override;
    CosNotifyChannelAdmin::ProxyConsumer_ptr obtain_notification_push_consumer(
        CosNotifyChannelAdmin::ClientType ctype, CORBA::Long& proxy_id) override;
    void offer_change(const CosNotification::EventTypeSeq& added,
                      const CosNotification::EventTypeSeq& removed) override;
    void destroy() override;

    CosEventChannelAdmin::ProxyPushConsumer_ptr obtain_push_consumer() override;
    CosEventChannelAdmin::ProxyPullConsumer_ptr obtain_pull_consumer() override;
};

}  // namespace qv_notify
