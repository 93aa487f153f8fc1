#include "orb/event_argument.h"

#include "orb_internals.h"
#include "orb_state.h"
#include "thread_state.h"

namespace qv_orb {

namespace {

void Move(CosNotification::PropertySeq& from, CosNotification::PropertySeq& to) {
    const CORBA::ULong length = from.length();
    const CORBA::ULong maximum = from.maximum();
    // Nothing is handed over by a sequence that has no buffer, or one that isn't its own.
    if (CosNotification::Property* const buffer = from.get_buffer(true)) {
        to.replace(maximum, length, buffer, true);
    } else {
        to = from;
    }
}

}  // namespace

void TakeEvent(const CosNotification::StructuredEvent& argument, CosNotification::StructuredEvent& taken) {
    if (!thread_state().in_remote_upcall || !orb_state().server_interceptors.empty()) {
        taken = argument;
        return;
    }
    auto& own = const_cast<CosNotification::StructuredEvent&>(argument);
    taken.header.fixed_header = own.header.fixed_header;
    Move(own.header.variable_header, taken.header.variable_header);
    Move(own.filterable_data, taken.filterable_data);
    taken.remainder_of_body.NP_swap(own.remainder_of_body);
}

}  // namespace qv_orb
