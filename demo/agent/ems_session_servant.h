#pragma once

#include <map>
#include <mutex>
#include <string>

#include "demo/agent/ems.h"
#include "emsSessionS.h"

namespace qv_demo {

/// The EMS's end of one session. Its managers are those that are registered with the library, each made when
/// the OSS first asks for it. Thread-safe.
class EmsSessionServant : public POA_emsSession::EmsSession_I {
  public:
    EmsSessionServant(const Ems& ems, std::shared_ptr<const Session> session);

    session::Session_I_ptr associatedSession() override;
    void ping() override;
    void endSession() override;
    void getSupportedManagers(emsSession::EmsSession_I::managerNames_T_out names) override;
    void getManager(const char* name, common::Common_I_out manager) override;
    void getEventChannel(CosNotifyChannelAdmin::EventChannel_out channel) override;

  private:
    void Touch() { ems_.sessions.Touch(session_->id); }

    const Ems& ems_;
    const std::shared_ptr<const Session> session_;
    std::mutex mutex_;
    std::map<std::string, common::Common_I_var> managers_;
};

}  // namespace qv_demo
