#include "tests/faults/load/ems_client.h"

#include <orbsvcs/CosNamingC.h>

#include <fstream>
#include <stdexcept>
#include <utility>

#include "services/notify/program/call_limit.h"

namespace qv_faults {
namespace {

/// Shorter than what the campaign allows a call, which counts the time that the process needs around it.
constexpr std::chrono::seconds kCallLimit{8};

constexpr std::array<std::pair<const char*, const char*>, 5> kFactoryName{
    {{"TMF_MTNM", "Class"},
     {"ZORVEX", "Vendor"},
     {kEmsName, "EmsInstance"},
     {"2.0", "Version"},
     {kEmsName, "EmsSessionFactory_I"}}};

CosNaming::Name FactoryName() {
    CosNaming::Name name;
    name.length(static_cast<CORBA::ULong>(kFactoryName.size()));
    CORBA::ULong next = 0;
    for (const auto& [id, kind] : kFactoryName) {
        name[next].id = CORBA::string_dup(id);
        name[next++].kind = CORBA::string_dup(kind);
    }
    return name;
}

const char* CompletionOf(const CORBA::SystemException& exception) {
    switch (exception.completed()) {
        case CORBA::COMPLETED_YES:
            return "COMPLETED_YES";
        case CORBA::COMPLETED_NO:
            return "COMPLETED_NO";
        default:
            return "COMPLETED_MAYBE";
    }
}

std::string OneWord(std::string text) {
    for (char& letter : text) {
        letter = letter == ' ' ? '_' : letter;
    }
    return text.empty() ? "-" : text;
}

}  // namespace

void Listener::eventLossOccurred(const char* start_time, const char* notification_id) {
    journal_.Note("told loss " + OneWord(start_time) + " " + OneWord(notification_id));
}

void Listener::eventLossCleared(const char* end_time) {
    journal_.Note("told cleared " + OneWord(end_time) + " -");
}

Passwords Passwords::Read(const std::string& path) {
    std::ifstream in(path);
    Passwords passwords;
    if (!std::getline(in, passwords.current) || !std::getline(in, passwords.other)) {
        throw std::runtime_error("two passwords are expected in " + path);
    }
    return passwords;
}

EmsClient::EmsClient(CORBA::ORB_ptr orb, const std::string& naming, const Journal& journal)
    : orb_(CORBA::ORB::_duplicate(orb)), naming_(naming), listener_(new Listener(journal)) {
    listener_reference_ = listener_->_this();
}

emsSessionFactory::EmsSessionFactory_I_var EmsClient::Resolve() const {
    const CORBA::Object_var service =
        orb_->string_to_object(("corbaloc:iiop:" + naming_ + "/NameService").c_str());
    const CosNaming::NamingContext_var root = CosNaming::NamingContext::_narrow(service.in());
    const CORBA::Object_var object = root->resolve(FactoryName());
    emsSessionFactory::EmsSessionFactory_I_var factory =
        emsSessionFactory::EmsSessionFactory_I::_narrow(object.in());
    if (CORBA::is_nil(factory.in())) {
        throw CORBA::INV_OBJREF();
    }
    return factory;
}

emsSession::EmsSession_I_var EmsClient::LogIn(const std::string& user, const std::string& password) const {
    const emsSessionFactory::EmsSessionFactory_I_var factory = Resolve();
    emsSession::EmsSession_I_var session;
    factory->getEmsSession(user.c_str(), password.c_str(), listener_reference_.in(), session.out());
    return session;
}

CORBA::ORB_var StartOrb(int& argc, char** argv) {
    CORBA::ORB_var orb = CORBA::ORB_init(argc, argv);
    qv_notify::LimitCalls(orb.in(), kCallLimit);
    const CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
    const PortableServer::POA_var root = PortableServer::POA::_narrow(object.in());
    const PortableServer::POAManager_var manager = root->the_POAManager();
    manager->activate();
    return orb;
}

std::string OutcomeOf(const CORBA::Exception& exception) {
    const auto* const failure = CORBA::SystemException::_downcast(&exception);
    if (failure == nullptr) {
        return std::string("user:") + exception._name();
    }
    return std::string("system:") + exception._name() + ":" + CompletionOf(*failure);
}

}  // namespace qv_faults
