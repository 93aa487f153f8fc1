#pragma once

#include <fstream>
#include <mutex>
#include <stdexcept>
#include <string>

#include "demo/agent/core/event_plan.h"

namespace qv_demo {

/// The file of the ledger can't be written; the text names it and what to do.
class LedgerError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Writes down what the agent raised and what the pipeline said of it, so that each event can be accounted
/// for afterwards. Lines of commas, each complete in the file as soon as its call returns:
///
///   event,NUMBER,ID,TYPE,SEVERITY,ELEMENT,sent|held   "held" when it was buffered or dropped
///   loss,TIME,ID                                      this event could not be sent; again for each try
///   cleared,TIME                                      the channel is in service
///
/// Thread-safe; calls nothing that could wait for another lock.
class EventLedger {
  public:
    /// Continues the file at `path` or makes it. Raises LedgerError.
    explicit EventLedger(const std::string& path);

    /// These return false when the line could not be written.
    bool NoteEvent(const PlannedEvent& event, const std::string& id, bool sent);
    bool NoteLoss(const std::string& time, const std::string& id);
    bool NoteCleared(const std::string& time);

    const std::string& path() const { return path_; }

  private:
    bool Write(const std::string& line);

    const std::string path_;
    std::mutex mutex_;
    std::ofstream out_;
};

/// The ledger's line of an event, without its end.
std::string LedgerLine(const PlannedEvent& event, const std::string& id, bool sent);

}  // namespace qv_demo
