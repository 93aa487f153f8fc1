#include "notification/notification_id.h"

#include <ace/Guard_T.h>
#include <ace/OS_NS_time.h>

#include "notification/supplier.h"
#include "platform/secure_string.h"

namespace NS_CORBA {

namespace {

NotificationID g_notificationID(ACE_OS::time(nullptr));

}  // namespace

NotificationID::NotificationID(time_t now) {
    tm local{};
    ACE_OS::localtime_r(&now, &local);
    if (snprintf_s(m_szPrefix, sizeof m_szPrefix, sizeof m_szPrefix - 1, "%02d%02d%02d%02d%02d",
                   local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec) < 0) {
        m_szPrefix[0] = '\0';
    }
}

NotificationID::~NotificationID() = default;

// Without its lock the number is read and not counted up.
unsigned long NotificationID::NextNumber() {
    const ACE_Guard<ACE_Thread_Mutex> guard(m_mutex);
    return guard.locked() ? ++m_counter : m_counter;
}

void NotificationID::Next(std::string& id) {
    char text[50] = "";
    if (snprintf_s(text, sizeof text, sizeof text - 1, "%s%lu", m_szPrefix, NextNumber()) < 0) {
        id.clear();
    }
    id = text;
}

void GetNotificationID(std::string& id) {
    g_notificationID.Next(id);
}

}  // namespace NS_CORBA
