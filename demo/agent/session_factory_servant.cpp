#include "demo/agent/session_factory_servant.h"

#include "agent/corbabaseagentconfig.h"
#include "demo/agent/ems_session_servant.h"
#include "demo/agent/failure.h"
#include "demo/agent/task_context.h"
#include "tools/secrets/wiper.h"

namespace qv_demo {

char* SessionFactoryServant::getVersion() {
    return CORBA::string_dup(NS_CORBA::CorbaBaseAgentConfig::Instance()->IDLVersion().c_str());
}

void SessionFactoryServant::getEmsSession(const char* user, const char* password,
                                          nmsSession::NmsSession_I_ptr client,
                                          emsSession::EmsSession_I_out session) {
    const qv_secrets::Wiper wiper(password);
    const auto opened = Open(user, password, client);
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

std::shared_ptr<const Session> SessionFactoryServant::Open(const char* user, const char* password,
                                                           nmsSession::NmsSession_I_ptr client) {
    const std::string address = CallerAddress();
    ems_.accounts.LogIn(user, password, address);
    try {
        if (CORBA::is_nil(client)) {
            Fail(globaldefs::EXCPT_INVALID_INPUT, "client must not be nil");
        }
        return ems_.sessions.Open(user, address, client);
    } catch (...) {
        Accounts::LogOut(user, address);
        throw;
    }
}

}  // namespace qv_demo
