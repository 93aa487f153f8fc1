// An OSS's way to the EMS: the naming service, a login, a session.
#pragma once

#include <tao/ORB.h>
#include <tao/PortableServer/PortableServer.h>

#include <array>
#include <string>

#include "emsSessionFactoryC.h"
#include "nmsSessionS.h"
#include "tests/faults/load/journal.h"

namespace qv_faults {

/// The EMS as the configuration of the campaign names it.
constexpr const char* kEmsName = "Zorvex/KLV";

/// The session's end in the OSS, which writes down what the EMS says of lost events. Thread-safe.
class Listener : public POA_nmsSession::NmsSession_I {
  public:
    explicit Listener(const Journal& journal) : journal_(journal) {}

    session::Session_I_ptr associatedSession() override { return session::Session_I::_nil(); }
    void ping() override {}
    void endSession() override {}
    void eventLossOccurred(const char* start_time, const char* notification_id) override;
    void eventLossCleared(const char* end_time) override;

  private:
    const Journal& journal_;
};

/// The two passwords of a user: `current` is tried first. Who changes it and gets no answer doesn't know
/// which holds.
struct Passwords {
    std::string current;
    std::string other;

    /// The first two lines of a file. Raises std::runtime_error.
    static Passwords Read(const std::string& path);
    void Swap() { current.swap(other); }
};

/// Finds the session factory and logs in. Operations raise what the ORB or the EMS raises. Used by one
/// thread.
class EmsClient {
  public:
    /// `naming` is HOST:PORT; `journal` outlives this object.
    EmsClient(CORBA::ORB_ptr orb, const std::string& naming, const Journal& journal);

    /// Asks the naming service.
    emsSessionFactory::EmsSessionFactory_I_var Resolve() const;

    emsSession::EmsSession_I_var LogIn(const std::string& user, const std::string& password) const;

  private:
    const CORBA::ORB_var orb_;
    const std::string naming_;
    PortableServer::Servant_var<Listener> listener_;
    nmsSession::NmsSession_I_var listener_reference_;
};

/// The ORB of this process, serving, with a limit on each call.
CORBA::ORB_var StartOrb(int& argc, char** argv);

/// A manager of the session. Raises CORBA::INV_OBJREF for one of another kind.
template <class Manager>
typename Manager::_var_type ManagerOf(emsSession::EmsSession_I_ptr session, const char* name) {
    common::Common_I_var manager;
    session->getManager(name, manager.out());
    typename Manager::_var_type narrowed = Manager::_narrow(manager.in());
    if (CORBA::is_nil(narrowed.in())) {
        throw CORBA::INV_OBJREF();
    }
    return narrowed;
}

/// What came of a call, in one word: user:NAME or system:NAME:COMPLETED_….
std::string OutcomeOf(const CORBA::Exception& exception);

}  // namespace qv_faults
