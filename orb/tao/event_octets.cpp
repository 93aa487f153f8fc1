// orb/event_octets.h for a real TAO.
#include "orb/event_octets.h"

#include <tao/CDR.h>

namespace qv_orb {

std::string EventToOctets(const CosNotification::StructuredEvent& event) {
    TAO_OutputCDR stream;
    if (!(stream << ACE_OutputCDR::from_boolean(TAO_ENCAP_BYTE_ORDER)) || !(stream << event)) {
        throw CORBA::MARSHAL();
    }
    std::string octets;
    octets.reserve(stream.total_length());
    for (const ACE_Message_Block* block = stream.begin(); block != stream.end(); block = block->cont()) {
        octets.append(block->rd_ptr(), block->length());
    }
    return octets;
}

void EventFromOctets(const std::string& octets, CosNotification::StructuredEvent& event) {
    TAO_InputCDR stream(octets.data(), octets.size());
    CORBA::Boolean byte_order = false;
    if (!(stream >> ACE_InputCDR::to_boolean(byte_order))) {
        throw CORBA::MARSHAL();
    }
    stream.reset_byte_order(static_cast<int>(byte_order));
    if (!(stream >> event)) {
        throw CORBA::MARSHAL();
    }
}

}  // namespace qv_orb
