#include "limited_report.h"

#include "diagnostics.h"

namespace qv_orb {

void LimitedReport::Tell(const std::string& sentence) {
    const std::lock_guard<std::mutex> guard(mutex_);
    const auto dropped = limit_.Admit(std::chrono::steady_clock::now());
    if (!dropped) {
        return;
    }
    if (*dropped != 0) {
        Report(std::to_string(*dropped) + " " + what_ + " were left out here");
    }
    Report(sentence);
}

void LimitedReport::Restart() {
    const std::lock_guard<std::mutex> guard(mutex_);
    limit_ = {};
}

}  // namespace qv_orb
