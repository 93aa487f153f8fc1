#pragma once

#include <ace/Time_Value.h>
#include <pthread.h>
#include <sys/time.h>

#include <cstdint>

namespace NS_CORBA {

/// The wall-clock time for a record; -1 seconds when the system doesn't tell it.
inline ACE_Time_Value RecordTime() {
    timeval now{};
    if (gettimeofday(&now, nullptr) != 0) {
        return ACE_Time_Value(-1, 0);
    }
    return ACE_Time_Value(now);
}

/// The low 32 bits of the calling thread's id.
inline std::int32_t RecordThreadId() {
    return static_cast<std::int32_t>(pthread_self());
}

}  // namespace NS_CORBA
