#include "services/notify/model/structured_port.h"

#include "orb/object_access.h"
#include "services/notify/delivery/call_outcome.h"

namespace qv_notify {

StructuredPort::StructuredPort(CosNotifyComm::StructuredPushConsumer_ptr consumer)
    : m_consumer(CosNotifyComm::StructuredPushConsumer::_duplicate(consumer)) {}

CallOutcome StructuredPort::Push(const CosNotification::StructuredEvent& event) {
    try {
        m_consumer->push_structured_event(event);
        return {};
    } catch (const CORBA::Exception& exception) {
        return OutcomeOf(exception);
    }
}

CallOutcome StructuredPort::OfferChange(const CosNotification::EventTypeSeq& added,
                                        const CosNotification::EventTypeSeq& removed) {
    try {
        m_consumer->offer_change(added, removed);
        return {};
    } catch (const CORBA::Exception& exception) {
        return OutcomeOf(exception);
    }
}

std::string StructuredPort::Peer() const {
    return qv_orb::EndpointOf(m_consumer.in());
}

}  // namespace qv_notify
