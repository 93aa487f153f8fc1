#pragma once

#include "demo/agent/core/clock.h"

namespace qv_demo {

/// A clock that stands still until the test moves it.
class ManualClock {
  public:
    Clock clock() {
        return [this] { return now_; };
    }
    void Advance(std::chrono::milliseconds by) { now_ += by; }

  private:
    TimePoint now_{};
};

}  // namespace qv_demo
