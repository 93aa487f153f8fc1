#include "orb_init_info.h"

#include <cstring>

#include "minor_codes.h"
#include "orb_state.h"

namespace qv_orb {
namespace {

[[noreturn]] void ClientSideNotOffered() {
    throw CORBA::NO_IMPLEMENT(0, CORBA::COMPLETED_NO);
}

void CheckNameIsFree(PortableInterceptor::ServerRequestInterceptor_ptr interceptor) {
    CORBA::String_var name = interceptor->name();
    if (name[0] == '\0') {
        return;
    }
    for (const auto& present : orb_state().server_interceptors) {
        CORBA::String_var taken = present->name();
        if (std::strcmp(name, taken) == 0) {
            throw PortableInterceptor::ORBInitInfo::DuplicateName(name);
        }
    }
}

}  // namespace

void InitInfo::CheckOpen() const {
    if (!open_) {
        throw CORBA::OBJECT_NOT_EXIST(0, CORBA::COMPLETED_NO);
    }
}

void InitInfo::OrbMade(CORBA::ORB_ptr orb) {
    orb_ = CORBA::ORB::_duplicate(orb);
    for (const auto& [id, object] : early_references_) {
        orb_->register_initial_reference(id.c_str(), object);
    }
    early_references_.clear();
}

CORBA::StringSeq* InitInfo::arguments() {
    CheckOpen();
    const auto& arguments = orb_state().arguments;
    CORBA::StringSeq_var list = new CORBA::StringSeq;
    list->length(static_cast<CORBA::ULong>(arguments.size()));
    for (CORBA::ULong i = 0; i < list->length(); ++i) {
        list[i] = CORBA::string_dup(arguments[i].c_str());
    }
    return list._retn();
}

char* InitInfo::orb_id() {
    CheckOpen();
    return CORBA::string_dup(orb_state().orb_id.c_str());
}

void InitInfo::register_initial_reference(const char* id, CORBA::Object_ptr object) {
    CheckOpen();
    if (id == nullptr || *id == '\0') {
        throw InvalidName();
    }
    if (CORBA::is_nil(object)) {
        throw CORBA::BAD_PARAM(kNilInitialReference, CORBA::COMPLETED_NO);
    }
    if (CORBA::is_nil(orb_)) {
        for (const auto& entry : early_references_) {
            if (entry.first == id) {
                throw InvalidName();
            }
        }
        early_references_.emplace_back(id, CORBA::Object::_duplicate(object));
        return;
    }
    try {
        orb_->register_initial_reference(id, object);
    } catch (const CORBA::ORB::InvalidName&) {
        throw InvalidName();
    }
}

CORBA::Object_ptr InitInfo::resolve_initial_references(const char* id) {
    CheckOpen();
    if (CORBA::is_nil(orb_)) {
        throw CORBA::BAD_INV_ORDER(0, CORBA::COMPLETED_NO);
    }
    try {
        return orb_->resolve_initial_references(id);
    } catch (const CORBA::ORB::InvalidName&) {
        throw InvalidName();
    }
}

void InitInfo::add_server_request_interceptor(PortableInterceptor::ServerRequestInterceptor_ptr interceptor) {
    CheckOpen();
    if (CORBA::is_nil(interceptor)) {
        throw CORBA::BAD_PARAM(0, CORBA::COMPLETED_NO);
    }
    CheckNameIsFree(interceptor);
    orb_state().server_interceptors.emplace_back(
        PortableInterceptor::ServerRequestInterceptor::_duplicate(interceptor));
}

void InitInfo::add_client_request_interceptor(PortableInterceptor::Interceptor_ptr) {
    ClientSideNotOffered();
}

void InitInfo::add_ior_interceptor(PortableInterceptor::Interceptor_ptr) {
    ClientSideNotOffered();
}

PortableInterceptor::SlotId InitInfo::allocate_slot_id() {
    CheckOpen();
    return orb_state().slot_count++;
}

}  // namespace qv_orb
