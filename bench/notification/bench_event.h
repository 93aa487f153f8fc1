// The event that the benchmarks of notification push.
#pragma once

#include <orbsvcs/CosNotificationC.h>
#include <tao/TimeBaseC.h>

#include <cstdint>
#include <ctime>

namespace qv_bench {

/// Of this machine, in nanoseconds; the same in all processes.
inline std::uint64_t Now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * 1000000000 + static_cast<std::uint64_t>(time.tv_nsec);
}

/// An alarm with 12 filterable properties of mixed types and a time-out in its header. The last property is
/// the time of its sending.
CosNotification::StructuredEvent AlarmEvent();

constexpr CORBA::ULong kSentAt = 11;

inline void Stamp(CosNotification::StructuredEvent& event) {
    event.filterable_data[kSentAt].value <<= static_cast<CORBA::ULongLong>(Now());
}

inline std::uint64_t SentAt(const CosNotification::StructuredEvent& event) {
    CORBA::ULongLong at = 0;
    event.filterable_data[kSentAt].value >>= at;
    return at;
}

}  // namespace qv_bench
