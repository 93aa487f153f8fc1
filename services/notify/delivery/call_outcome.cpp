#include "services/notify/delivery/call_outcome.h"

#include <orbsvcs/CosEventCommC.h>

#include "orb/portability.h"

namespace qv_notify {

namespace {

template <class T>
bool Is(const CORBA::Exception& exception) {
    return T::_downcast(&exception) != nullptr;
}

CallFailure FailureOf(const CORBA::Exception& exception) {
    // A consumer raises Disconnected when it considers the connection as ended.
    if (Is<CORBA::OBJECT_NOT_EXIST>(exception) || Is<CORBA::INV_OBJREF>(exception) ||
        Is<CosEventComm::Disconnected>(exception)) {
        return CallFailure::kNotThere;
    }
    if (Is<CORBA::TIMEOUT>(exception)) {
        return CallFailure::kTimeout;
    }
    if (Is<CORBA::COMM_FAILURE>(exception) || Is<CORBA::TRANSIENT>(exception)) {
        return CallFailure::kConnection;
    }
    return CallFailure::kRefused;
}

}  // namespace

CallOutcome OutcomeOf(const CORBA::Exception& exception) {
    CallOutcome outcome;
    outcome.failed = true;
    outcome.failure = FailureOf(exception);
    outcome.reason = qv_orb::ExceptionText(exception);
    const auto* system = CORBA::SystemException::_downcast(&exception);
    // A consumer that raises something has had the event.
    outcome.in_doubt = system != nullptr && outcome.failure != CallFailure::kRefused &&
                       system->completed() == CORBA::COMPLETED_MAYBE;
    return outcome;
}

}  // namespace qv_notify
