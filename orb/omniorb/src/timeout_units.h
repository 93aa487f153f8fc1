// Units of timeouts: 100 nanoseconds in a policy, milliseconds in the ORB.
#pragma once

#include <cstdint>

namespace qv_orb {

constexpr std::uint32_t kLongestMilliseconds = INT32_MAX;

/// An expiry in units of 100 nanoseconds as milliseconds: rounded up, so that a call never gets less than was
/// asked for, and kLongestMilliseconds (24 days, as far as system calls count) at most.
std::uint32_t Milliseconds(std::uint64_t expiry);

}  // namespace qv_orb
