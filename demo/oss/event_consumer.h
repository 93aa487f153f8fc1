#pragma once

#include <orbsvcs/CosNotifyCommS.h>

#include "demo/oss/event_line.h"
#include "demo/oss/event_watch.h"

namespace qv_oss {

/// What an OSS shows of an event of the MTNM interface; of any other event as much as it has.
EventFields FieldsOf(const CosNotification::StructuredEvent& event);

/// Takes the events that a channel pushes. Thread-safe.
class EventConsumer : public POA_CosNotifyComm::StructuredPushConsumer {
  public:
    /// `watch` outlives this object's activation.
    explicit EventConsumer(EventWatch& watch) : watch_(watch) {}

    void push_structured_event(const CosNotification::StructuredEvent& event) override;
    void disconnect_structured_push_consumer() override;
    void offer_change(const CosNotification::EventTypeSeq& added,
                      const CosNotification::EventTypeSeq& removed) override;

  private:
    EventWatch& watch_;
};

}  // namespace qv_oss
