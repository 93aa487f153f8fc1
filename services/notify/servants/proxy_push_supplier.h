// The proxies to which structured push consumers connect.
#pragma once

#include <orbsvcs/CosNotifyChannelAdminS.h>

#include "services/notify/servants/node_servant.h"

namespace qv_notify {

/// Any thread may call.
class ProxyPushSupplier final : public ProxyServant<POA_CosNotifyChannelAdmin::StructuredProxyPushSupplier> {
  public:
    using ProxyServant::ProxyServant;

    CosNotifyChannelAdmin::ProxyType MyType() override { return CosNotifyChannelAdmin::PUSH_STRUCTURED; }
    CosNotifyChannelAdmin::ConsumerAdmin_ptr MyAdmin() override;
    /// Mapping filters are not offered: nil, and setting one raises CORBA::NO_IMPLEMENT.
    CosNotifyFilter::MappingFilter_ptr priority_filter() override;
    void priority_filter(CosNotifyFilter::MappingFilter_ptr filter) override;
    CosNotifyFilter::MappingFilter_ptr lifetime_filter() override;
    void lifetime_filter(CosNotifyFilter::MappingFilter_ptr filter) override;
    CosNotification::EventTypeSeq* obtain_offered_types(CosNotifyChannelAdmin::ObtainInfoMode mode) override;

    void connect_structured_push_consumer(CosNotifyComm::StructuredPushConsumer_ptr push_consumer) override;
    void suspend_connection() override;
    void resume_connection() override;
    void subscription_change(const CosNotification::EventTypeSeq& added,
                             const CosNotification::EventTypeSeq& removed) override;
    /// Ends the proxy.
    void disconnect_structured_push_supplier() override;

  private:
    void SetSuspended(bool suspended);
};

}  // namespace qv_notify
