#pragma once

#include <orbsvcs/CosNotificationC.h>

namespace NS_CORBA {

/// Writes an event other than an alarm to the notification log. The fifth filterable value of a pulled file
/// transfer holds a secret: it is masked in `event` itself first. @throws CORBA::BAD_PARAM for such an event
/// with fewer values
void LogSentEvent(CosNotification::StructuredEvent& event);

}  // namespace NS_CORBA
