#include "services/notify/program/naming_registration.h"

#include <orbsvcs/CosNamingC.h>

#include <utility>

#include "orb/portability.h"

namespace qv_notify {

namespace {

CosNaming::Name NameOf(const std::string& id) {
    CosNaming::Name name;
    name.length(1);
    name[0].id = CORBA::string_dup(id.c_str());
    name[0].kind = CORBA::string_dup("");
    return name;
}

CosNaming::NamingContext_ptr Root(CORBA::ORB_ptr orb) {
    const CORBA::Object_var object = orb->resolve_initial_references("NameService");
    return CosNaming::NamingContext::_narrow(object.in());
}

}  // namespace

NamingRegistration::NamingRegistration(CORBA::ORB_ptr orb, CORBA::Object_ptr object, std::string name,
                                       OperatorLog& log, Pauses pauses)
    : m_orb(orb),
      m_object(CORBA::Object::_duplicate(object)),
      m_name(std::move(name)),
      m_log(log),
      m_pauses(pauses) {
    m_thread = std::thread([this] { Run(); });
}

NamingRegistration::~NamingRegistration() {
    Stop();
    m_thread.join();
}

void NamingRegistration::Stop() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_stopped = true;
    m_wake.notify_all();
}

bool NamingRegistration::WaitUntilEnded(std::chrono::steady_clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_wake.wait_until(lock, deadline, [this] { return m_ended; });
}

void NamingRegistration::Run() {
    do {
        if (!BoundStill()) {
            m_bound = Bind();
        }
    } while (WaitFor(m_bound ? m_pauses.look_after : m_pauses.retry));
    Unbind();
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_ended = true;
    m_wake.notify_all();
}

bool NamingRegistration::WaitFor(std::chrono::milliseconds pause) {
    std::unique_lock<std::mutex> lock(m_mutex);
    return !m_wake.wait_for(lock, pause, [this] { return m_stopped; });
}

bool NamingRegistration::BoundStill() const {
    if (!m_bound) {
        return false;
    }
    try {
        const CosNaming::NamingContext_var root = Root(m_orb);
        const CORBA::Object_var found = root->resolve(NameOf(m_name));
        return m_object->_is_equivalent(found.in());
    } catch (const CosNaming::NamingContext::NotFound&) {
        return false;
    } catch (const CORBA::Exception&) {
        return true;  // nobody can be told otherwise meanwhile
    }
}

bool NamingRegistration::Bind() {
    try {
        const CosNaming::NamingContext_var root = Root(m_orb);
        if (CORBA::is_nil(root.in())) {
            throw CORBA::INV_OBJREF();
        }
        root->rebind(NameOf(m_name), m_object.in());
        m_log.Tell("naming", "registered as " + m_name + " in the naming service");
        return true;
    } catch (const CORBA::Exception& exception) {
        m_log.Tell("naming",
                   "the naming service can't be reached or refuses the name " + m_name + " (" +
                       qv_orb::ExceptionText(exception) +
                       "); clients have to use the service's corbaloc address meanwhile. It is tried again "
                       "every few seconds; see that the naming service runs where -ORBInitRef says.");
        return false;
    }
}

// Only while the name is this service's: another one may have taken it over.
void NamingRegistration::Unbind() const {
    try {
        if (m_bound && BoundStill()) {
            const CosNaming::NamingContext_var root = Root(m_orb);
            root->unbind(NameOf(m_name));
        }
    } catch (const CORBA::Exception&) {
        // The name stays behind and leads nowhere until the next start.
    }
}

}  // namespace qv_notify
