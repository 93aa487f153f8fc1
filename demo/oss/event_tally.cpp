#include "demo/oss/event_tally.h"

#include "demo/oss/text.h"

namespace qv_oss {

bool EventTally::Count(const std::string& type, const std::string& id) {
    ++events_;
    ++by_type_[type];
    if (id.empty()) {
        return true;
    }
    if (!ids_.insert(id).second) {
        ++again_;
        return false;
    }
    order_.push_back(id);
    if (order_.size() > kRemembered) {
        ids_.erase(order_.front());
        order_.pop_front();
    }
    return true;
}

std::string EventTally::Summary() const {
    std::string text = std::to_string(events_) + (events_ == 1 ? " event" : " events");
    const char* separator = ": ";
    for (const auto& [type, count] : by_type_) {
        text += separator + std::to_string(count) + " " + Printable(type);
        separator = ", ";
    }
    return text + "; " + std::to_string(again_) + " of them came again; losses announced " +
           std::to_string(losses_) + ", cleared " + std::to_string(cleared_);
}

}  // namespace qv_oss
