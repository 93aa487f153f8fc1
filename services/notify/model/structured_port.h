// The way to a structured push consumer.
#pragma once

#include <orbsvcs/CosNotifyCommC.h>

#include "services/notify/delivery/consumer_port.h"

namespace qv_notify {

/// Calls block for as long as the consumer takes, or the time limit of calls, and end with an outcome instead
/// of an exception. Holds a count of the reference, which it gives back at its end. Used by one thread at a
/// time, as any port; Peer may be asked meanwhile.
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
