#include "services/notify/delivery/feed_report.h"

#include <utility>

namespace qv_notify {
namespace {

const char* AdviceFor(ConsumerState state) {
    switch (state) {
        case ConsumerState::kOnline:
            return "Nothing needs to be done.";
        case ConsumerState::kSuspect:
            return "It is tried again with growing pauses; look whether its process runs and can be reached.";
        case ConsumerState::kSuspended:
            return "Its events are kept until it resumes.";
        case ConsumerState::kGone:
            break;
    }
    return "Its proxy is ended; a consumer that comes back has to connect anew.";
}

}  // namespace

FeedReport::FeedReport(std::string path, OperatorLog& log) : m_path(std::move(path)), m_log(log) {}

void FeedReport::State(ConsumerState state, const std::string& consumer, const std::string& reason,
                       std::size_t waiting) {
    m_told = state;
    m_log.Tell(m_path, "consumer " + Named(consumer) + " is " + NameOf(state) + ": " + reason + "; " +
                           std::to_string(waiting) + " events wait for it. " + AdviceFor(state));
}

void FeedReport::Dropped(std::int64_t sequence, const std::string& consumer, const std::string& why,
                         std::size_t waiting, std::uint64_t so_far) {
    m_log.Tell(m_path + " dropped",
               "event " + std::to_string(sequence) + " for consumer " + Named(consumer) + " was dropped: " +
                   why + "; " + std::to_string(waiting) + " events wait, " + std::to_string(so_far) +
                   " were dropped so far. A faster consumer or a higher MaxEventsPerConsumer helps.");
}

void FeedReport::Expired(std::size_t events, const std::string& consumer, std::uint64_t so_far) {
    m_log.Tell(m_path + " expired", std::to_string(events) + " events for consumer " + Named(consumer) +
                                        " were older than their time-out allows and were dropped, " +
                                        std::to_string(so_far) +
                                        " so far. The consumer is too slow or away.");
}

void FeedReport::InDoubt(std::int64_t sequence, const std::string& consumer, const std::string& reason) {
    m_log.Tell(m_path + " in doubt", "consumer " + Named(consumer) + " may get event " +
                                         std::to_string(sequence) + " twice: its answer did not come (" +
                                         reason + ")");
}

std::string FeedReport::Named(const std::string& consumer) const {
    return (consumer.empty() ? "(unknown)" : consumer) + " of proxy " + m_path;
}

}  // namespace qv_notify
