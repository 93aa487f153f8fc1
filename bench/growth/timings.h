// Times of single steps, for the benchmarks of growth.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

namespace qv_bench {

/// Microseconds that each of some actions took. For one thread.
class Timings {
  public:
    template <class Action>
    void Take(Action&& action) {
        const auto begin = std::chrono::steady_clock::now();
        action();
        const std::chrono::duration<double, std::micro> taken = std::chrono::steady_clock::now() - begin;
        m_times.push_back(taken.count());
    }

    /// Below which that share of them lies; 0 when there are none.
    double At(double share) {
        if (m_times.empty()) {
            return 0;
        }
        const auto place = static_cast<std::size_t>(static_cast<double>(m_times.size() - 1) * share);
        std::nth_element(m_times.begin(), m_times.begin() + static_cast<std::ptrdiff_t>(place),
                         m_times.end());
        return m_times[place];
    }

  private:
    std::vector<double> m_times;
};

}  // namespace qv_bench
