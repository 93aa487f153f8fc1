#include "demo/agent/core/refusal_reports.h"

#include <iterator>

namespace qv_demo {
namespace {

constexpr const char* kOthers = "";  // stands for all hosts that have no place of their own

}  // namespace

std::optional<std::uint64_t> RefusalReports::Count(const std::string& host) {
    const TimePoint now = clock_();
    const std::lock_guard<std::mutex> guard(mutex_);
    if (hosts_.count(host) == 0 && hosts_.size() >= kMostHosts) {
        ForgetQuietHosts(now);
    }
    const bool has_place = hosts_.count(host) != 0 || hosts_.size() < kMostHosts;
    const auto [place, first] = hosts_.try_emplace(has_place ? host : kOthers, Entry{now, 0});
    Entry& entry = place->second;
    if (!first && now - entry.reported < kInterval) {
        ++entry.held_back;
        return std::nullopt;
    }
    entry.reported = now;
    const std::uint64_t number = entry.held_back + 1;
    entry.held_back = 0;
    return number;
}

void RefusalReports::ForgetQuietHosts(TimePoint now) {
    for (auto host = hosts_.begin(); host != hosts_.end();) {
        host = now - host->second.reported >= kInterval ? hosts_.erase(host) : std::next(host);
    }
}

}  // namespace qv_demo
