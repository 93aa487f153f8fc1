// How events and constraints tell the time.
#pragma once

#include <chrono>
#include <cstdint>
#include <ratio>

namespace qv_notify {

/// The units of a TimeT, 100 ns each.
using TimeUnits = std::chrono::duration<std::int64_t, std::ratio<1, 10000000>>;

/// 1970-01-01 as a TimeT, which begins with the Gregorian calendar at 1582-10-15.
constexpr std::uint64_t kSystemEpoch = 0x01b21dd213814000;

}  // namespace qv_notify
