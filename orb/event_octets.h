// Structured events as octets, for those who keep them beyond the life of the process.
#pragma once

#include <orbsvcs/CosNotificationC.h>

#include <string>

#include "orb/export.h"

namespace qv_orb {

/// The event as a CDR encapsulation, byte order included. Raises a system exception for a value that CDR
/// cannot carry. Thread-safe.
QV_ORB_API std::string EventToOctets(const CosNotification::StructuredEvent& event);

/// The event of an encapsulation that EventToOctets made, on whichever machine. Raises CORBA::MARSHAL for
/// anything else; never reads beyond the octets. Thread-safe.
QV_ORB_API void EventFromOctets(const std::string& octets, CosNotification::StructuredEvent& event);

}  // namespace qv_orb
