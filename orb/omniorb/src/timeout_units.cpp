#include "timeout_units.h"

#include <algorithm>

namespace qv_orb {

std::uint32_t Milliseconds(std::uint64_t expiry) {
    constexpr std::uint64_t kUnitsPerMillisecond = 10000;
    const std::uint64_t begun = expiry % kUnitsPerMillisecond != 0 ? 1 : 0;
    return static_cast<std::uint32_t>(
        std::min<std::uint64_t>(expiry / kUnitsPerMillisecond + begun, kLongestMilliseconds));
}

}  // namespace qv_orb
