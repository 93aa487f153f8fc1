// The way to a structured push consumer.
#pragma once

#include <orbsvcs/CosNotifyCommC.h>

#include "services/notify/delivery/consumer_port.h"

namespace qv_notify {

class StructuredPort : public ConsumerPort {
  public:
    explicit StructuredPort(CosNotifyComm::StructuredPushConsumer_ptr consumer);

    CallOutcome Push(const CosNotification::StructuredEvent& event) override;
    CallOutcome OfferChange(const CosNotification::EventTypeSeq& added,
                            const CosNotification::EventTypeSeq& removed) override;
    std::string Peer() const override;

  private:
    const CosNotifyComm::StructuredPushConsumer_var m_consumer;
};

}  // namespace qv_notify
