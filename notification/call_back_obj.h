#pragma once

#include <orbsvcs/CosNotificationC.h>

#include <sstream>
#include <string>

#include "platform/export.h"

namespace NS_CORBA {

/// What the agent bundle implements to hear of the event channel. The bundle owns its object, which must
/// outlive the supplier threads; times have the form of TimeChange::getTime.
///
/// Thread safety: called from pushers, from both supplier threads and from whoever supervises the channel,
/// but never from two of them at once while the event buffer is locked. Where it says so the lock is held:
/// pushing an event from there blocks for good unless another thread does it.
class QV_API CallBackObj {
  public:
    virtual ~CallBackObj() = default;

    /// The channel is back after an outage. With the lock held when the channel was made anew.
    virtual void EventLossCleared(const std::string& time) = 0;

    /// An event could not be sent and is buffered or lost. Again for each try of a buffered event. With the
    /// lock held unless a bundle reported the loss itself.
    /// @param notificationId the event's id; empty when the event carries one that the library didn't make
    virtual void EventLossOccurred(const std::string& time, const std::string& notificationId) = 0;

    /// Appends the text of an alarm that was sent, for the notification log. With the lock held except from
    /// PushEvent.
    virtual void StructuredEventToStr(std::stringstream& stream,
                                      const CosNotification::StructuredEvent& event) = 0;

    /// The channel was looked at and is in service. Without the lock: a heartbeat may be pushed from here.
    virtual void HeartBeating() = 0;
};

}  // namespace NS_CORBA
