#include "target_servant.h"

#include <new>
#include <stdexcept>

namespace qv_test {

void TargetServant::Called(const char* operation) {
    TakeTurns();
    if (on_call) {
        on_call(operation);
    }
    TakeTurns();
}

char* TargetServant::title() {
    Called("title");
    return CORBA::string_dup(m_title.c_str());
}

CORBA::Long TargetServant::level() {
    Called("level");
    return m_level;
}

void TargetServant::level(CORBA::Long value) {
    Called("level");
    m_level = value;
}

char* TargetServant::inherited(const char* text) {
    Called("inherited");
    return CORBA::string_dup((std::string("inherited ") + text).c_str());
}

char* TargetServant::echo(const char* text) {
    Called("echo");
    return CORBA::string_dup(text);
}

// The list comes back one longer, its last element being `first` with a larger count.
CORBA::Long TargetServant::mix(const Seam::Item& first, Seam::ItemList& items, Seam::Colour_out colour) {
    Called("mix");
    const CORBA::ULong length = items.length();
    items.length(length + 1);
    items[length].name = first.name;
    items[length].count = first.count + 1;
    colour = Seam::BLUE;
    return static_cast<CORBA::Long>(length) + first.count;
}

Seam::Choice* TargetServant::choose(const Seam::Choice& which, const CORBA::Any& value, CORBA::Any_out copy) {
    Called("choose");
    copy = new CORBA::Any(value);
    auto* chosen = new Seam::Choice;
    chosen->number(static_cast<CORBA::Long>(std::string(which.text()).size()));
    return chosen;
}

Seam::Target_ptr TargetServant::self(Seam::Target_ptr peer, CORBA::Object_ptr& other) {
    Called("self");
    CORBA::release(other);
    other = CORBA::Object::_duplicate(peer);
    return Seam::Target::_duplicate(peer);
}

char* TargetServant::shorten(const char* text) {
    Called("shorten");
    return CORBA::string_dup(text);
}

CORBA::WChar* TargetServant::wide(const CORBA::WChar* text) {
    Called("wide");
    return CORBA::wstring_dup(text);
}

void TargetServant::fail(const char* kind) {
    Called("fail");
    const std::string what = kind;
    if (what == "refused") {
        throw Seam::Refused("as asked", 5);
    }
    if (what == "unlisted") {
        throw Seam::Unlisted("nobody declared it");
    }
    if (what == "system") {
        throw CORBA::BAD_PARAM(77, CORBA::COMPLETED_YES);
    }
    if (what == "std") {
        throw std::runtime_error("not of CORBA");
    }
    if (what == "int") {
        throw 42;
    }
    if (what == "memory") {
        throw std::bad_alloc();
    }
}

void TargetServant::tell(const char*) {
    Called("tell");
}

char* TargetServant::null_result() {
    Called("null_result");
    return nullptr;
}

void TargetServant::null_out(Seam::Item_out value) {
    Called("null_out");
    value = new Seam::Item;
    value->name = static_cast<char*>(nullptr);
    value->count = 1;
}

void TargetServant::null_exception() {
    Called("null_exception");
    Seam::Refused refused;
    refused.reason = static_cast<char*>(nullptr);
    refused.code = 1;
    throw refused;
}

Seam::Octets* TargetServant::blob(CORBA::ULong count) {
    Called("blob");
    auto* octets = new Seam::Octets;
    octets->length(count);
    return octets;
}

Seam::ItemList* TargetServant::items(CORBA::ULong count) {
    Called("items");
    auto* items = new Seam::ItemList;
    items->length(count);
    for (CORBA::ULong i = 0; i < count; ++i) {
        (*items)[i].name = ("element-" + std::to_string(i)).c_str();
        (*items)[i].count = static_cast<CORBA::Long>(i);
    }
    return items;
}

CORBA::Long TargetServant::nest(Seam::Target_ptr peer, CORBA::Long depth) {
    Called("nest");
    if (depth <= 0) {
        return 1;
    }
    const Seam::Target_var here = _this();
    return 1 + peer->nest(here, depth - 1);
}

}  // namespace qv_test
