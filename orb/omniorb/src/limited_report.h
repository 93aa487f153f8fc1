// Reports that anybody who reaches a port can provoke.
#pragma once

#include <mutex>
#include <string>

#include "rate_limit.h"

namespace qv_orb {

/// Reports no more sentences of a kind than RateLimit lets through, and how many were left out.
/// Thread-safe.
class LimitedReport {
  public:
    /// `what` is what the sentences are, as "messages about SSL"; the text must live as long as this.
    constexpr explicit LimitedReport(const char* what) : what_(what) {}

    void Tell(const std::string& sentence);
    /// Forgets what was said.
    void Restart();

  private:
    const char* const what_;
    std::mutex mutex_;
    RateLimit limit_;  // guarded by mutex_
};

}  // namespace qv_orb
