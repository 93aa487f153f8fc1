// orb/event_argument.h for a real TAO.
#include "orb/event_argument.h"

namespace qv_orb {

// A collocated call hands the caller's own event to the servant, and there is no telling one from a remote call here.
void TakeEvent(const CosNotification::StructuredEvent& argument, CosNotification::StructuredEvent& taken) {
    taken = argument;
}

}  // namespace qv_orb
