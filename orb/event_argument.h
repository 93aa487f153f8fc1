// The event that a client pushes, without copying it.
#pragma once

#include <orbsvcs/CosNotificationC.h>

#include "orb/export.h"

namespace qv_orb {

/// Puts the event that a servant got as an in argument into `taken`. In a request from another process the
/// argument belongs to the skeleton, which does away with it unread: then what it consists of is moved, and
/// the servant must not look at it any more. Where somebody else may look at it (a collocated call,
/// interceptors that see the arguments afterwards) it is copied. To be called on the servant's thread.
QV_ORB_API void TakeEvent(const CosNotification::StructuredEvent& argument,
                          CosNotification::StructuredEvent& taken);

}  // namespace qv_orb
