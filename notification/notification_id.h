#pragma once

#include <ace/Thread_Mutex.h>

#include <ctime>
#include <string>

#include "notification/internal_api.h"

namespace NS_CORBA {

/// Makes notification ids: the moment of its own making as MMDDhhmmss in local time, then a sequence number
/// from 1 on. Any thread may ask for one.
class QV_INTERNAL_API NotificationID {
  public:
    /// @param now the moment; the prefix is empty when it can't be shown
    explicit NotificationID(time_t now);
    virtual ~NotificationID();

    /// The next id.
    void Next(std::string& id);

  private:
    unsigned long NextNumber();

    unsigned long m_counter = 0;  // guarded by m_mutex
    ACE_Thread_Mutex m_mutex;
    char m_szPrefix[20] = "";
};

}  // namespace NS_CORBA
