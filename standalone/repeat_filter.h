#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qv_standalone {

/// Keeps one record that comes over and over from pushing everything else out of a log: the first few of a
/// run of equal records are written, the rest are counted. Used by one thread at a time.
class RepeatFilter {
  public:
    static constexpr std::uint64_t kWritten = 3;  ///< records of a run that are written

    /// Whether `record` continues the run of the one before it.
    bool Continues(std::string_view record) const { return m_run > 0 && record == m_last; }
    /// Starts a run with `record`, which is written.
    void Start(std::string_view record);
    /// Counts one more record of the run. False when it is to be held back.
    bool Admit();
    /// The number held back since the last call.
    std::uint64_t TakeHeldBack();

  private:
    std::string m_last;
    std::uint64_t m_run = 0;
    std::uint64_t m_held = 0;
};

}  // namespace qv_standalone
