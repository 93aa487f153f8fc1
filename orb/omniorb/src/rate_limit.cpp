#include "rate_limit.h"

#include <utility>

namespace qv_orb {

std::optional<unsigned long> RateLimit::Admit(Time now) {
    if (let_through_ == 0 || now - period_begin_ >= kPeriod) {
        period_begin_ = now;
        let_through_ = 0;
    }
    if (let_through_ >= kBurst) {
        ++dropped_;
        return std::nullopt;
    }
    ++let_through_;
    return std::exchange(dropped_, 0);
}

}  // namespace qv_orb
