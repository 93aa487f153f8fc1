// The proxies into which structured push suppliers push.
#pragma once

#include <orbsvcs/CosNotifyChannelAdminS.h>

#include "services/notify/servants/node_servant.h"

namespace qv_notify {

/// Any thread may call.
class ProxyPushConsumer final : public ProxyServant<POA_CosNotifyChannelAdmin::StructuredProxyPushConsumer> {
  public:
    using ProxyServant::ProxyServant;

    CosNotifyChannelAdmin::ProxyType MyType() override { return CosNotifyChannelAdmin::PUSH_STRUCTURED; }
    CosNotifyChannelAdmin::SupplierAdmin_ptr MyAdmin() override;
    CosNotification::EventTypeSeq* obtain_subscription_types(
        CosNotifyChannelAdmin::ObtainInfoMode mode) override;

    /// A supplier without a reference, nil, is not told anything.
    void connect_structured_push_supplier(CosNotifyComm::StructuredPushSupplier_ptr push_supplier) override;
    void offer_change(const CosNotification::EventTypeSeq& added,
                      const CosNotification::EventTypeSeq& removed) override;
    /// Returns once the channel has the event; raises what ChannelTraffic::Accept raises.
    void push_structured_event(const CosNotification::StructuredEvent& notification) override;
    /// Ends the proxy.
    void disconnect_structured_push_consumer() override;
};

}  // namespace qv_notify
