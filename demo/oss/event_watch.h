#pragma once

#include <cstddef>
#include <mutex>
#include <string>

#include "demo/oss/event_line.h"
#include "demo/oss/event_tally.h"
#include "demo/oss/nms_session_servant.h"

namespace qv_oss {

/// Writes each event, and what the EMS says of lost ones, to standard output, and counts them. Thread-safe.
class EventWatch : public LossListener {
  public:
    explicit EventWatch(bool colours) : colours_(colours) {}

    void Show(const EventFields& event);
    /// A line that is no event; it begins with "--".
    void Remark(const std::string& text);
    void LossOccurred(const std::string& start_time, const std::string& notification_id) override;
    void LossCleared(const std::string& end_time) override;

    std::size_t events() const;
    std::string Summary() const;
    /// Whether the EMS has said since the last call that events arrive again.
    bool TakeCleared();
    /// Whether a line couldn't be written: nobody sees the events any more.
    bool OutputFailed() const;

  private:
    void Write(const std::string& line);

    const bool colours_;
    mutable std::mutex mutex_;
    EventTally tally_;
    bool cleared_ = false;
    bool failed_ = false;
};

}  // namespace qv_oss
