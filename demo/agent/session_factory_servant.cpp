#include "demo/agent/session_factory_servant.h"

#include <cstring>

#include "agent/corbabaseagentconfig.h"
#include "demo/agent/console.h"
#include "demo/agent/ems_session_servant.h"
#include "demo/agent/failure.h"
#include "demo/agent/request_hooks.h"
#include "logging/corbalogutil.h"

namespace qv_demo {
namespace {

/// Overwrites the ORB's copy of the password when the login is over. What the ORB received it in is the ORB's
/// own.
class PasswordWiper {
  public:
    explicit PasswordWiper(const char* password) : password_(const_cast<char*>(password)) {}
    ~PasswordWiper() { WipeText(password_); }
    PasswordWiper(const PasswordWiper&) = delete;
    PasswordWiper& operator=(const PasswordWiper&) = delete;

  private:
    char* const password_;
};

/// Fit for a line of a log, whatever a stranger sent as a name.
std::string Printable(const char* user) {
    return IsUserName(user) ? user : "(a name that no user can have)";
}

}  // namespace

char* SessionFactoryServant::getVersion() {
    return CORBA::string_dup(NS_CORBA::CorbaBaseAgentConfig::Instance()->IDLVersion().c_str());
}

void SessionFactoryServant::getEmsSession(const char* user, const char* password,
                                          nmsSession::NmsSession_I_ptr client,
                                          emsSession::EmsSession_I_out session) {
    const PasswordWiper wiper(password);
    const std::string address = CallerAddress();
    Authenticate(user, password);
    if (CORBA::is_nil(client)) {
        Fail(globaldefs::EXCPT_INVALID_INPUT, "client must not be nil");
    }
    const auto opened = ems_.sessions.Open(user, address, client);
    try {
        const PortableServer::POA_ptr poa = opened->poas.session.in();
        PortableServer::ServantBase_var servant = new EmsSessionServant(ems_, opened);
        const PortableServer::ObjectId_var id = poa->activate_object(servant.in());
        const CORBA::Object_var reference = poa->id_to_reference(id.in());
        session = emsSession::EmsSession_I::_narrow(reference.in());
    } catch (...) {
        ems_.sessions.End(opened->id, "its object could not be made");
        throw;
    }
}

void SessionFactoryServant::Authenticate(const char* user, const char* password) {
    switch (passwords_.Check(user, password)) {
        case PasswordChecker::Result::kAccepted:
            return;
        case PasswordChecker::Result::kBusy:
            Fail(globaldefs::EXCPT_UNABLE_TO_COMPLY, "too many logins at once; try again");
        case PasswordChecker::Result::kRejected:
            TA_POS;
            NS_CORBA::TaDebugWithPara(1, "[SessionFactoryServant::getEmsSession] Login of %s from %s refused",
                                      Printable(user).c_str(), CallerAddress().c_str());
            Say("refused " + Printable(user) + " from " + CallerAddress() + " (user or password is wrong)");
            Fail(globaldefs::EXCPT_ACCESS_DENIED, "user or password is wrong");
    }
}

}  // namespace qv_demo
