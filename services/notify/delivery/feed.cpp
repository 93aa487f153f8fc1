#include "services/notify/delivery/feed.h"

#include <algorithm>
#include <utility>

namespace qv_notify {

namespace {

// So many events are delivered before other consumers get their turn on the thread.
constexpr int kShare = 32;

SteadyTime SteadyNow() {
    return std::chrono::steady_clock::now();
}

Time WallNow() {
    return std::chrono::system_clock::now();
}

// Nobody else knows of events that aren't kept.
void AddIfKept(std::vector<std::int64_t>& done, const EventPtr& event) {
    if (event->kept) {
        done.push_back(event->sequence);
    }
}

}  // namespace

Feed::Feed(std::string path, const QueuePolicy& policy, const RetryPolicy& retry, Surroundings around)
    : m_around(std::move(around)),
      m_report(std::move(path), *m_around.log),
      m_queue(policy),
      m_health(retry) {}

void Feed::Connect(std::shared_ptr<ConsumerPort> port) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_port = std::move(port);
    ScheduleIfUseful();
}

bool Feed::Connected() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_port != nullptr;
}

void Feed::Close() {
    std::shared_ptr<ConsumerPort> port;  // released behind the guard
    std::vector<EventPtr> waiting;
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_closed = true;
    m_health.SetGone();
    waiting = m_queue.Clear();
    m_news.Clear();
    waiting.push_back(std::move(m_in_doubt));
    waiting.push_back(std::move(m_refused));
    port.swap(m_port);
}

void Feed::Add(const EventPtr& event) {
    std::vector<std::int64_t> done;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (m_closed) {
            return;
        }
        const bool was_empty = m_queue.Empty();
        if (const std::vector<EventPtr> dropped = m_queue.Push(event); !dropped.empty()) {
            TellDropped(dropped, "there is no room for more", m_counts.discarded, done);
        }
        if (was_empty) {
            ScheduleIfUseful();
        }
    }
    ReportDone(done);
}

void Feed::Announce(const CosNotification::EventTypeSeq& added,
                    const CosNotification::EventTypeSeq& removed) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (!m_closed && m_port != nullptr) {
        m_news.Add(added, removed);
        ScheduleIfUseful();
    }
}

void Feed::Suspend() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_health.Suspend();
    NoteState("its owner suspended the connection");
}

void Feed::Resume() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_health.Resume();
    NoteState("its owner resumed the connection");
    ScheduleIfUseful();
}

bool Feed::Suspended() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_health.State() == ConsumerState::kSuspended;
}

void Feed::SetPolicy(const QueuePolicy& policy) {
    std::vector<std::int64_t> done;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (policy == m_queue.Policy()) {
            return;
        }
        TellDropped(m_queue.SetPolicy(policy), "its queue was made shorter", m_counts.discarded, done);
    }
    ReportDone(done);
}

void Feed::SetPacing(std::chrono::nanoseconds interval) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (interval == m_pacing) {
        return;
    }
    m_pacing = interval;
    m_in_round = false;
    m_next_round = SteadyTime::min();
    ScheduleIfUseful();
}

bool Feed::DiscardOne() {
    std::vector<std::int64_t> done;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        const EventPtr event = m_queue.DiscardOne();
        if (event == nullptr) {
            return false;
        }
        TellDropped({event}, "its channel is full", m_counts.discarded, done);
    }
    ReportDone(done);
    return true;
}

std::size_t Feed::Depth() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_queue.Size();
}

FeedCounts Feed::Counts() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_counts;
}

ConsumerState Feed::State() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_health.State();
}

Job::Next Feed::Run() {
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        BeginRound();
        for (int share = 0; share < kShare && MayRun(SteadyNow()) && !RoundOver(); ++share) {
            const Step step = m_news.Empty() ? DeliverOne(lock) : AnnounceOne(lock);
            if (step == Step::kStop) {
                break;
            }
        }
        if (RoundOver()) {
            m_in_round = false;
            m_next_round = SteadyNow() + std::chrono::duration_cast<SteadyTime::duration>(m_pacing);
        }
        if (m_health.State() == ConsumerState::kGone && !m_closed && m_end == EndOfProxy::kNotWanted) {
            m_end = EndOfProxy::kWanted;
        }
        if (m_end != EndOfProxy::kWanted) {
            return WhenToGoOn(SteadyNow());
        }
    }
    return EndProxy();
}

Job::Next Feed::EndProxy() {
    if (m_around.gone && !m_around.gone()) {
        return Next::At(SteadyNow() + kPauseOfEnd);
    }
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_end = EndOfProxy::kDone;
    return Next::OnSchedule();
}

// What comes while a round is delivered is collected for the next one.
void Feed::BeginRound() {
    if (m_pacing.count() > 0 && !m_in_round && MayRun(SteadyNow())) {
        m_in_round = true;
        m_round_left = m_queue.Size();
    }
}

bool Feed::RoundOver() const {
    return m_in_round && m_news.Empty() && (m_round_left == 0 || m_queue.Empty());
}

bool Feed::AnythingToDo() const {
    return !m_closed && m_port != nullptr && !(m_queue.Empty() && m_news.Empty());
}

bool Feed::MayRun(SteadyTime now) const {
    return AnythingToDo() && now >= m_next_round && m_health.MayCall(now);
}

Job::Next Feed::WhenToGoOn(SteadyTime now) const {
    if (MayRun(now)) {
        return Next::Now();
    }
    const ConsumerState state = m_health.State();
    const bool waits_for_time = state == ConsumerState::kSuspect || state == ConsumerState::kOnline;
    return AnythingToDo() && waits_for_time ? Next::At(std::max(m_next_round, m_health.RetryAt()))
                                            : Next::OnSchedule();
}

Feed::Step Feed::DeliverOne(std::unique_lock<std::mutex>& lock) {
    std::vector<std::int64_t> done;
    std::vector<EventPtr> expired;
    const EventPtr event = m_queue.Pop(WallNow(), expired);
    TellExpired(expired, done);
    Step step = Step::kGoOn;
    if (event != nullptr) {
        m_round_left -= std::min<std::size_t>(m_round_left, 1);
        const std::shared_ptr<ConsumerPort> port = m_port;
        lock.unlock();
        const CallOutcome outcome = port->Push(event->body);
        lock.lock();
        step = TakeOutcome(event, outcome, done);
    }
    if (!done.empty()) {
        lock.unlock();
        ReportDone(done);
        lock.lock();
    }
    return step;
}

Feed::Step Feed::TakeOutcome(const EventPtr& event, const CallOutcome& outcome,
                             std::vector<std::int64_t>& done) {
    if (!outcome.failed) {
        ++m_counts.delivered;
        AddIfKept(done, event);
    }
    if (m_closed) {
        return Step::kStop;
    }
    if (!outcome.failed) {
        m_in_doubt.reset();
        m_refused.reset();
        m_health.Succeeded();
        NoteState("it takes events");
        return Step::kGoOn;
    }
    if (outcome.failure == CallFailure::kRefused && std::exchange(m_refused, event) != event) {
        m_health.BeginRefusals();
    }
    const ConsumerHealth::Action action = m_health.Failed(outcome.failure, SteadyNow());
    if (action == ConsumerHealth::Action::kDropEvent) {
        TellDropped({event}, "the consumer refuses it: " + outcome.reason, m_counts.refused, done);
        m_refused.reset();
        NoteState("it answers");
        return Step::kGoOn;
    }
    if (action == ConsumerHealth::Action::kGiveUp) {
        AddIfKept(done, event);
        NoteState(outcome.reason);
        return Step::kStop;
    }
    if (outcome.in_doubt && std::exchange(m_in_doubt, event) != event) {
        ++m_counts.in_doubt;
        m_report.InDoubt(event->sequence, Peer(), outcome.reason);
    }
    ++m_round_left;
    TellDropped(m_queue.Return(event), "there is no room for more", m_counts.discarded, done);
    NoteState(outcome.reason);
    return action == ConsumerHealth::Action::kTryAtOnce ? Step::kGoOn : Step::kStop;
}

Feed::Step Feed::AnnounceOne(std::unique_lock<std::mutex>& lock) {
    TypeNews news = std::exchange(m_news, {});
    const std::shared_ptr<ConsumerPort> port = m_port;
    lock.unlock();
    const CallOutcome outcome = port->OfferChange(news.Added(), news.Removed());
    lock.lock();
    // Many consumers don't implement it.
    if (m_closed || !outcome.failed || outcome.failure == CallFailure::kRefused) {
        return m_closed ? Step::kStop : Step::kGoOn;
    }
    const ConsumerHealth::Action action = m_health.Failed(outcome.failure, SteadyNow());
    // One that takes too long for it is to get its events all the same.
    if (outcome.failure == CallFailure::kConnection && action != ConsumerHealth::Action::kGiveUp) {
        news.Add(m_news);
        m_news = std::move(news);
    }
    NoteState(outcome.reason);
    return action == ConsumerHealth::Action::kTryAtOnce ? Step::kGoOn : Step::kStop;
}

void Feed::NoteState(const std::string& reason) {
    const ConsumerState state = m_health.State();
    m_slow.store(state == ConsumerState::kSuspect, std::memory_order_relaxed);
    if (state != m_report.ToldState()) {
        m_report.State(state, Peer(), reason, m_queue.Size());
    }
}

std::string Feed::Peer() const {
    return m_port == nullptr ? std::string() : m_port->Peer();
}

void Feed::TellExpired(const std::vector<EventPtr>& events, std::vector<std::int64_t>& done) {
    m_counts.expired += events.size();
    for (const EventPtr& event : events) {
        AddIfKept(done, event);
    }
    if (!events.empty()) {
        m_report.Expired(events.size(), Peer(), m_counts.expired);
    }
}

void Feed::TellDropped(const std::vector<EventPtr>& events, const std::string& why, std::uint64_t& count,
                       std::vector<std::int64_t>& done) {
    count += events.size();
    for (const EventPtr& event : events) {
        AddIfKept(done, event);
        m_report.Dropped(event->sequence, Peer(), why, m_queue.Size(), count);
    }
}

void Feed::ReportDone(const std::vector<std::int64_t>& sequences) const {
    if (!sequences.empty() && m_around.done) {
        m_around.done(sequences);
    }
}

// The run itself finds out when it is time, and is called again then.
void Feed::ScheduleIfUseful() {
    const ConsumerState state = m_health.State();
    if (AnythingToDo() && state != ConsumerState::kSuspended && state != ConsumerState::kGone) {
        m_around.pool->Schedule(shared_from_this());
    }
}

}  // namespace qv_notify
