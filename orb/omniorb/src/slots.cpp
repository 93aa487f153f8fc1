#include "slots.h"

#include "minor_codes.h"
#include "orb_state.h"

namespace qv_orb {
namespace {

thread_local SlotTable* t_scope = nullptr;

// Slots of a thread outside requests. They are those of one ORB: its successor finds them empty.
struct ThreadSlots {
    unsigned orb_number = 0;
    SlotTable table;
};

SlotTable& CurrentTable() {
    if (t_scope != nullptr) {
        return *t_scope;
    }
    thread_local ThreadSlots own;
    if (own.orb_number != orb_state().orb_number) {
        own = {orb_state().orb_number, {}};
    }
    return own.table;
}

void CheckSlot(PortableInterceptor::SlotId id) {
    if (id >= orb_state().slot_count) {
        throw PortableInterceptor::InvalidSlot();
    }
}

void CheckInitialised() {
    if (orb_state().initialising) {
        throw CORBA::BAD_INV_ORDER(kSlotDuringInitialisation, CORBA::COMPLETED_NO);
    }
}

}  // namespace

CORBA::Any* SlotTable::Get(PortableInterceptor::SlotId id) const {
    CheckSlot(id);
    return id < values_.size() ? new CORBA::Any(values_[id]) : new CORBA::Any;
}

void SlotTable::Set(PortableInterceptor::SlotId id, const CORBA::Any& data) {
    CheckSlot(id);
    if (id >= values_.size()) {
        values_.resize(id + 1);
    }
    values_[id] = data;
}

SlotScope::SlotScope(SlotTable& table) : outer_(t_scope) {
    t_scope = &table;
}

SlotScope::~SlotScope() {
    t_scope = outer_;
}

CORBA::Any* PICurrent::get_slot(PortableInterceptor::SlotId id) {
    CheckInitialised();
    return CurrentTable().Get(id);
}

void PICurrent::set_slot(PortableInterceptor::SlotId id, const CORBA::Any& data) {
    CheckInitialised();
    CurrentTable().Set(id, data);
}

}  // namespace qv_orb
