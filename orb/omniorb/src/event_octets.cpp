#include "orb/event_octets.h"

#include "orb_internals.h"

namespace qv_orb {

std::string EventToOctets(const CosNotification::StructuredEvent& event) {
    cdrEncapsulationStream stream(CORBA::ULong{0}, true);
    event >>= stream;
    return std::string(static_cast<const char*>(stream.bufPtr()), stream.bufSize());
}

void EventFromOctets(const std::string& octets, CosNotification::StructuredEvent& event) {
    if (octets.empty()) {
        throw CORBA::MARSHAL(0, CORBA::COMPLETED_NO);
    }
    // The stream copies what is not aligned as CDR wants it.
    cdrEncapsulationStream stream(reinterpret_cast<const CORBA::Octet*>(octets.data()),
                                  static_cast<CORBA::ULong>(octets.size()));
    event <<= stream;
}

}  // namespace qv_orb
