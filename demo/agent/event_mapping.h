#pragma once

#include <orbsvcs/CosNotificationC.h>

#include <sstream>
#include <string>

#include "demo/agent/core/event_plan.h"

namespace qv_demo {

/// The event as the interface has it; the library stamps the first filterable entry, the notification id.
/// @param time the moment of the event, as the interface writes times
CosNotification::StructuredEvent ToStructuredEvent(const PlannedEvent& event, const std::string& ems,
                                                   const std::string& time);

/// The notification id that the library gave the event; empty when it has none.
std::string NotificationIdOf(const CosNotification::StructuredEvent& event);

/// Appends what the notification log says of an alarm beside its notification id.
void AppendAlarmText(std::stringstream& out, const CosNotification::StructuredEvent& event);

}  // namespace qv_demo
