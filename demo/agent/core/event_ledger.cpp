#include "demo/agent/core/event_ledger.h"

#include <cerrno>
#include <cstring>

namespace qv_demo {

EventLedger::EventLedger(const std::string& path) : path_(path), out_(path, std::ios::app) {
    if (!out_) {
        throw LedgerError("the ledger of events " + path + " can't be written (" + std::strerror(errno) +
                          "); choose another directory with --log-dir");
    }
}

bool EventLedger::NoteEvent(const PlannedEvent& event, const std::string& id, bool sent) {
    return Write(LedgerLine(event, id, sent));
}

bool EventLedger::NoteLoss(const std::string& time, const std::string& id) {
    return Write("loss," + time + "," + id);
}

bool EventLedger::NoteCleared(const std::string& time) {
    return Write("cleared," + time);
}

bool EventLedger::Write(const std::string& line) {
    const std::lock_guard<std::mutex> guard(mutex_);
    out_ << line << std::endl;
    const bool written = static_cast<bool>(out_);
    out_.clear();  // there may be room again for the next line
    return written;
}

std::string LedgerLine(const PlannedEvent& event, const std::string& id, bool sent) {
    return "event," + std::to_string(event.number) + "," + id + "," + TypeName(event.kind) + "," +
           SeverityName(event.severity) + "," + event.element + "," + (sent ? "sent" : "held");
}

}  // namespace qv_demo
