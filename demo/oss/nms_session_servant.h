#pragma once

#include <mutex>

#include <string>

#include "nmsSessionS.h"

namespace qv_oss {

/// Who hears what the EMS says of lost events, on threads of the ORB. Times are as the EMS wrote them.
class LossListener {
  public:
    virtual ~LossListener() = default;
    virtual void LossOccurred(const std::string& start_time, const std::string& notification_id) = 0;
    virtual void LossCleared(const std::string& end_time) = 0;
};

/// The OSS's end of the session, which the EMS calls. Thread-safe.
class NmsSessionServant : public POA_nmsSession::NmsSession_I {
  public:
    /// The EMS's end, once the login gave it.
    void SetAssociated(session::Session_I_ptr ems_session);

    /// Losses go to `listener`, or with null to standard error. A call that is under way is waited for.
    void TellLossesTo(LossListener* listener);

    session::Session_I_ptr associatedSession() override;
    void ping() override;
    void endSession() override;
    void eventLossOccurred(const char* start_time, const char* notification_id) override;
    void eventLossCleared(const char* end_time) override;

  private:
    std::mutex mutex_;
    session::Session_I_var ems_session_;
    std::mutex listener_mutex_;  // held while the listener is told
    LossListener* listener_ = nullptr;
};

}  // namespace qv_oss
