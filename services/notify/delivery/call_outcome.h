// What an exception of a call to a client means for the client.
#pragma once

#include "services/notify/delivery/consumer_port.h"

namespace qv_notify {

/// To be called in a handler of a CORBA exception that a call to a consumer or supplier raised.
CallOutcome OutcomeOf(const CORBA::Exception& exception);

}  // namespace qv_notify
