// The proxies into which structured push suppliers push.
#pragma once

#include <orbsvcs/CosNotifyChannelAdminS.h>

#include "services/notify/servants/node_servant.h"

namespace qv_notify {

/// Any thread may call.
class ProxyPushConsumer final
    : public FilteringServant<POA_CosNotifyChannelAdmin::StructuredProxyPushConsumer, ProxyNode,
                              QosLevel::kProxy> {
  public:
    using FilteringServant::FilteringServant;

    CosNotifyChannelAdmin::ProxyType MyType() override { return CosNotifyChannelAdmin::PUSH_STRUCTURED; }
    CosNotifyChannelAdmin::SupplierAdmin_ptr MyAdmin() override;
    CosNotification::EventTypeSeq* obtain_subscription_types(
        CosNotifyChannelAdmin::ObtainInfoMode mode) override;
    void validate_event_qos(const CosNotification::QoSProperties& required_qos,
                            CosNotification::NamedPropertyRangeSeq_out available_qos) override;

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
