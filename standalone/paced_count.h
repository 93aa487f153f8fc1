#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <utility>

namespace qv_standalone {

/// Tells a number that keeps growing: the first of it at once, then what has come meanwhile once per
/// interval. For one thread.
class PacedCount {
  public:
    using Clock = std::chrono::steady_clock;
    using Now = std::function<Clock::time_point()>;
    using Tell = std::function<void(std::uint64_t)>;

    PacedCount(Clock::duration interval, Now now, Tell tell)
        : m_interval(interval), m_now(std::move(now)), m_tell(std::move(tell)) {}

    /// Adds `more`, and tells when it is time to. With 0 it is only looked whether it is.
    void Add(std::uint64_t more) {
        m_count += more;
        if (m_count != 0 && (!m_told || m_now() - m_last >= m_interval)) {
            TellNow();
        }
    }

    /// Tells what wasn't told yet.
    void TellNow() {
        if (m_count == 0) {
            return;
        }
        m_told = true;
        m_last = m_now();
        m_tell(std::exchange(m_count, 0));
    }

  private:
    const Clock::duration m_interval;
    const Now m_now;
    const Tell m_tell;
    std::uint64_t m_count = 0;
    bool m_told = false;
    Clock::time_point m_last;
};

}  // namespace qv_standalone
