#include "demo/agent/ems_session_servant.h"

#include <utility>

#include "agent/corbabaseagentconfig.h"
#include "agent/manager_registry.h"
#include "demo/agent/failure.h"
#include "notification/supplier.h"

namespace qv_demo {

EmsSessionServant::EmsSessionServant(const Ems& ems, std::shared_ptr<const Session> session)
    : ems_(ems), session_(std::move(session)) {}

session::Session_I_ptr EmsSessionServant::associatedSession() {
    Touch();
    return session::Session_I::_duplicate(session_->client.in());
}

void EmsSessionServant::ping() {
    Touch();
}

void EmsSessionServant::endSession() {
    ems_.sessions.End(session_->id, "the OSS logged out");
}

void EmsSessionServant::getSupportedManagers(emsSession::EmsSession_I::managerNames_T_out names) {
    Touch();
    const auto& registered = NS_CORBA::CorbaBaseAgentConfig::Instance()->GetNorthMgrMap();
    emsSession::EmsSession_I::managerNames_T_var list = new emsSession::EmsSession_I::managerNames_T;
    list->length(static_cast<CORBA::ULong>(registered.size()));
    CORBA::ULong next = 0;
    for (const auto& entry : registered) {
        list[next++] = entry.first.c_str();
    }
    names = list._retn();
}

void EmsSessionServant::getManager(const char* name, common::Common_I_out manager) {
    Touch();
    NS_CORBA::MgrFactory* factory = NS_CORBA::CorbaBaseAgentConfig::Instance()->GetNorthMgr(name);
    if (factory == nullptr) {
        Fail(globaldefs::EXCPT_NOT_IMPLEMENTED, name);
    }
    const std::lock_guard<std::mutex> guard(mutex_);
    common::Common_I_var& known = managers_[name];
    if (CORBA::is_nil(known.in())) {
        const CORBA::Object_var made = factory->CreateMgr(session_->poas.session.in());
        known = common::Common_I::_narrow(made.in());
    }
    if (CORBA::is_nil(known.in())) {
        throw CORBA::OBJECT_NOT_EXIST();  // the session ended meanwhile
    }
    manager = common::Common_I::_duplicate(known.in());
}

void EmsSessionServant::getEventChannel(CosNotifyChannelAdmin::EventChannel_out channel) {
    Touch();
    if (ems_.events == nullptr) {
        Fail(globaldefs::EXCPT_NOT_IMPLEMENTED, "this EMS sends no events");
    }
    CosNotifyChannelAdmin::EventChannel_var current = NS_CORBA::SuppilerMgr::Instance()->getChannel();
    if (CORBA::is_nil(current.in())) {
        Fail(globaldefs::EXCPT_UNABLE_TO_COMPLY,
             "there is no event channel yet, as the notification service can't be reached; try again later");
    }
    channel = current._retn();
}

}  // namespace qv_demo
