#include "demo/oss/event_watch.h"

#include <iostream>

#include "demo/oss/text.h"

namespace qv_oss {

void EventWatch::Show(const EventFields& event) {
    const std::lock_guard<std::mutex> guard(mutex_);
    const bool fresh = tally_.Count(event.type, event.id);
    Write(EventLine(event, colours_) + (fresh ? "" : " (came again)"));
}

void EventWatch::Remark(const std::string& text) {
    const std::lock_guard<std::mutex> guard(mutex_);
    Write("-- " + text);
}

void EventWatch::LossOccurred(const std::string& start_time, const std::string& notification_id) {
    const std::lock_guard<std::mutex> guard(mutex_);
    tally_.CountLoss();
    Write("-- the EMS can't send events since " + Printable(start_time) + ", the first one " +
          Printable(notification_id));
}

void EventWatch::LossCleared(const std::string& end_time) {
    const std::lock_guard<std::mutex> guard(mutex_);
    tally_.CountCleared();
    cleared_ = true;
    Write("-- the EMS sends events again since " + Printable(end_time));
}

std::size_t EventWatch::events() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return tally_.events();
}

std::string EventWatch::Summary() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return tally_.Summary();
}

bool EventWatch::TakeCleared() {
    const std::lock_guard<std::mutex> guard(mutex_);
    const bool cleared = cleared_;
    cleared_ = false;
    return cleared;
}

bool EventWatch::OutputFailed() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return failed_;
}

void EventWatch::Write(const std::string& line) {
    std::cout << line << std::endl;
    failed_ = failed_ || !std::cout;
}

}  // namespace qv_oss
