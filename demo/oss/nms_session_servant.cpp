#include "demo/oss/nms_session_servant.h"

#include <string>

#include "demo/oss/problem.h"
#include "demo/oss/text.h"

namespace qv_oss {

void NmsSessionServant::SetAssociated(session::Session_I_ptr ems_session) {
    const std::lock_guard<std::mutex> guard(mutex_);
    ems_session_ = session::Session_I::_duplicate(ems_session);
}

session::Session_I_ptr NmsSessionServant::associatedSession() {
    const std::lock_guard<std::mutex> guard(mutex_);
    return session::Session_I::_duplicate(ems_session_.in());
}

void NmsSessionServant::ping() {}

void NmsSessionServant::endSession() {
    Complain("the EMS says that it ends the session");
}

void NmsSessionServant::TellLossesTo(LossListener* listener) {
    const std::lock_guard<std::mutex> guard(listener_mutex_);
    listener_ = listener;
}

void NmsSessionServant::eventLossOccurred(const char* start_time, const char* notification_id) {
    const std::lock_guard<std::mutex> guard(listener_mutex_);
    if (listener_ != nullptr) {
        return listener_->LossOccurred(start_time, notification_id);
    }
    Complain("the EMS has lost events since " + Printable(start_time));
}

void NmsSessionServant::eventLossCleared(const char* end_time) {
    const std::lock_guard<std::mutex> guard(listener_mutex_);
    if (listener_ != nullptr) {
        return listener_->LossCleared(end_time);
    }
    Complain("the EMS loses no more events since " + Printable(end_time));
}

}  // namespace qv_oss
