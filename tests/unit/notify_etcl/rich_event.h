#pragma once

#include <orbsvcs/CosNotificationC.h>
#include <tao/corba.h>

namespace qv_test {

/// The process's ORB, without which no text goes into an Any.
CORBA::ORB_ptr EtclOrb();

/// A Probe::Body with one value of every kind that a component can have.
CORBA::Any RichBody();

/// An event with properties of the usual kinds, some names in both lists, and the body above as its
/// remainder.
CosNotification::StructuredEvent RichEvent();

}  // namespace qv_test
