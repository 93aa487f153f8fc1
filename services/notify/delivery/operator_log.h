// What the service tells its operator.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <string>

namespace qv_notify {

/// Takes sentences for the operator: what happened, what it means, what to do. Those on one subject are
/// limited to kBurst in kPeriod. What is left out is counted and told with the next one, or by TellLeftOut:
/// the last of it, as that has the last totals. Any thread may call.
class OperatorLog {
  public:
    static constexpr std::size_t kBurst = 5;
    static constexpr std::chrono::seconds kPeriod{60};

    using Clock = std::function<std::chrono::steady_clock::time_point()>;
    using Sink = std::function<void(const std::string& line)>;

    /// The sink gets one line at a time, without an end of line.
    explicit OperatorLog(Sink sink, Clock clock = std::chrono::steady_clock::now);

    /// `subject` names what the sentence is about: the path of a proxy, or the kind of trouble.
    void Tell(const std::string& subject, const std::string& sentence);

    /// Tells what was left out on subjects whose period is over, of all with `now`. To be called now and
    /// then, and at the end.
    void TellLeftOut(bool now = false);

  private:
    struct Told {
        std::chrono::steady_clock::time_point since;
        std::size_t told = 0;
        std::size_t left_out = 0;
        std::string last;  // of what was left out
    };
    void Pass(const std::string& subject, Told& told, const std::string& sentence);
    void ForgetOld(std::chrono::steady_clock::time_point now);

    const Sink m_sink;
    const Clock m_clock;

    std::mutex m_mutex;
    std::map<std::string, Told> m_told;
    std::chrono::steady_clock::time_point m_forget_at = std::chrono::steady_clock::time_point::min();
};

}  // namespace qv_notify
