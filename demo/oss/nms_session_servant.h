#pragma once

#include <mutex>

#include "nmsSessionS.h"

namespace qv_oss {

/// The OSS's end of the session, which the EMS calls. Thread-safe.
class NmsSessionServant : public POA_nmsSession::NmsSession_I {
  public:
    /// The EMS's end, once the login gave it.
    void SetAssociated(session::Session_I_ptr ems_session);

    session::Session_I_ptr associatedSession() override;
    void ping() override;
    void endSession() override;
    void eventLossOccurred(const char* start_time, const char* notification_id) override;
    void eventLossCleared(const char* end_time) override;

  private:
    std::mutex mutex_;
    session::Session_I_var ems_session_;
};

}  // namespace qv_oss
