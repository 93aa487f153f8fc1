#include "servant_limit.h"

namespace qv_orb {

void ServantLimit::Enter() {
    std::unique_lock<std::mutex> lock(mutex_);
    may_enter_.wait(lock, [this] { return inside_ < limit_ && returning_ == 0; });
    ++inside_;
}

void ServantLimit::Leave() {
    bool wake_returning = false;
    {
        std::lock_guard<std::mutex> guard(mutex_);
        --inside_;
        wake_returning = returning_ != 0;
    }
    (wake_returning ? may_return_ : may_enter_).notify_one();
}

void ServantLimit::Return() {
    bool wake_entering = false;
    {
        std::unique_lock<std::mutex> lock(mutex_);
        ++returning_;
        may_return_.wait(lock, [this] { return inside_ < limit_; });
        --returning_;
        ++inside_;
        wake_entering = returning_ == 0 && inside_ < limit_;
    }
    if (wake_entering) {
        may_enter_.notify_one();
    }
}

unsigned ServantLimit::returning() const {
    std::lock_guard<std::mutex> guard(mutex_);
    return returning_;
}

}  // namespace qv_orb
