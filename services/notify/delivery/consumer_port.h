// The way to a consumer.
#pragma once

#include <orbsvcs/CosNotificationC.h>

#include <string>

#include "services/notify/delivery/consumer_health.h"

namespace qv_notify {

/// How a call to a consumer ended.
struct CallOutcome {
    bool failed = false;
    CallFailure failure = CallFailure::kRefused;
    /// It may have done what it was asked to, although it did not say so.
    bool in_doubt = false;
    std::string reason;  ///< for the operator; empty when nothing failed
};

/// Calls a consumer, in whichever of the standard's forms it is connected: structured, later any, or
/// sequence. Used by one thread at a time; blocks for as long as the consumer takes, or the time limit of
/// calls.
class ConsumerPort {
  public:
    virtual ~ConsumerPort() = default;

    virtual CallOutcome Push(const CosNotification::StructuredEvent& event) = 0;
    /// Tells it that types of events are offered, or no longer offered.
    virtual CallOutcome OfferChange(const CosNotification::EventTypeSeq& added,
                                    const CosNotification::EventTypeSeq& removed) = 0;
    /// Where it is, for the operator. Makes no call.
    virtual std::string Peer() const = 0;
};

}  // namespace qv_notify
