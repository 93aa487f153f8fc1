#include "services/notify/delivery/operator_log.h"

#include <utility>

namespace qv_notify {

namespace {

// Proxies come and go: what is known of the quiet ones is dropped when there are more than this.
constexpr std::size_t kMostSubjects = 1000;
// Not at each sentence: where many are told of in a short time, all are looked through for nothing.
constexpr std::chrono::seconds kBetweenForgetting{1};

}  // namespace

OperatorLog::OperatorLog(Sink sink, Clock clock) : m_sink(std::move(sink)), m_clock(std::move(clock)) {}

void OperatorLog::Tell(const std::string& subject, const std::string& sentence) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto now = m_clock();
    if (m_told.size() > kMostSubjects && now >= m_forget_at) {
        ForgetOld(now);
        m_forget_at = now + kBetweenForgetting;
    }
    Told& told = m_told[subject];
    if (told.told == 0 || now - told.since >= kPeriod) {
        told.since = now;
        told.told = 0;
    }
    if (told.told >= kBurst) {
        ++told.left_out;
        told.last = sentence;
        return;
    }
    Pass(subject, told, sentence);
}

void OperatorLog::TellLeftOut(bool now) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto time = m_clock();
    for (auto& [subject, told] : m_told) {
        if (told.left_out == 0 || (!now && time - told.since < kPeriod)) {
            continue;
        }
        told.since = time;
        told.told = 0;
        --told.left_out;  // this one
        Pass(subject, told, std::exchange(told.last, {}));
    }
}

void OperatorLog::Pass(const std::string& subject, Told& told, const std::string& sentence) {
    ++told.told;
    std::string line = sentence;
    if (told.left_out > 0) {
        line += " (" + std::to_string(told.left_out) + " lines about " + subject + " were left out)";
        told.left_out = 0;
    }
    m_sink(line);
}

void OperatorLog::ForgetOld(std::chrono::steady_clock::time_point now) {
    for (auto entry = m_told.begin(); entry != m_told.end();) {
        entry = now - entry->second.since >= kPeriod && entry->second.left_out == 0 ? m_told.erase(entry)
                                                                                    : std::next(entry);
    }
}

}  // namespace qv_notify
