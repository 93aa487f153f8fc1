#include "services/notify/channel/intake.h"

#include <utility>

namespace qv_notify {

namespace {

constexpr std::size_t kBatch = 64;
constexpr std::chrono::seconds kPauseOfStore{1};
// Another thread would cost a supplier more than so many consumers do.
constexpr std::size_t kFew = 1;

std::size_t Members(const Routes::Groups& groups) {
    std::size_t members = 0;
    for (const auto& [id, group] : groups) {
        members += group->members.size();
    }
    return members;
}

}  // namespace

Intake::Intake(std::string channel, std::shared_ptr<const Routes> routes, WorkPool& pool, Store* store,
               OperatorLog& log)
    : m_channel(std::move(channel)), m_routes(std::move(routes)), m_pool(pool), m_store(store), m_log(log) {}

void Intake::Add(EventPtr event) {
    const std::shared_ptr<const Routes::Groups> groups = m_routes->Get();
    if (MayPassBy(*groups, *event)) {
        for (const Destination* destination : Routes::Find(*groups, event->body)) {
            destination->feed->Add(event);
        }
        return;
    }
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (m_closed) {
            return;
        }
        const auto place = m_waiting.insert(m_waiting.end(), std::move(event));
        if (!(*place)->kept) {
            m_unkept.push_back(place);
        }
        if (m_waiting.size() > 1) {
            return;  // whoever added the first one has had the job scheduled
        }
    }
    m_pool.Schedule(shared_from_this());
}

// Not past an earlier event of the same supplier.
bool Intake::MayPassBy(const Routes::Groups& groups, const Event& event) {
    if (event.kept || Members(groups) > kFew) {
        return false;
    }
    const std::lock_guard<std::mutex> guard(m_mutex);
    return !m_closed && !m_dispatching && m_waiting.empty();
}

std::size_t Intake::Depth() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_waiting.size() + m_in_hand;
}

Intake::Discarded Intake::DiscardOne() {
    EventPtr event;
    std::size_t waiting = 0;
    std::uint64_t discarded = 0;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (m_unkept.empty()) {
            return m_waiting.empty() ? Discarded::kNothingWaits : Discarded::kOnlyKeptOnesWait;
        }
        event = std::move(*m_unkept.front());
        m_waiting.erase(m_unkept.front());
        m_unkept.pop_front();
        waiting = m_waiting.size();
        discarded = ++m_discarded;
    }
    m_log.Tell(m_channel + " dropped",
               "event " + std::to_string(event->sequence) + " of channel " + m_channel +
                   " was dropped before it was handed to consumers, as the channel is full; " +
                   std::to_string(waiting) + " events wait for that, " + std::to_string(discarded) +
                   " were dropped so far. Their filters take long, or its store can't be written.");
    return Discarded::kOne;
}

void Intake::Close() {
    Waiting waiting;  // destroyed behind the guard
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_closed = true;
    m_unkept.clear();
    waiting.swap(m_waiting);
}

Job::Next Intake::Run() {
    std::vector<EventPtr> waiting = TakeBatch();
    const std::shared_ptr<const Routes::Groups> groups = m_routes->Get();
    std::vector<Dispatch> batch;
    batch.reserve(waiting.size());
    for (EventPtr& one : waiting) {
        std::vector<const Destination*> destinations = Routes::Find(*groups, one->body);
        batch.push_back({std::move(one), std::move(destinations)});
    }
    if (!Keep(batch)) {
        ReturnBatch(std::move(batch));
        return Next::At(std::chrono::steady_clock::now() + kPauseOfStore);
    }
    for (const Dispatch& dispatch : batch) {
        for (const Destination* destination : dispatch.destinations) {
            destination->feed->Add(dispatch.event);
        }
    }
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_dispatching = false;
    m_in_hand = 0;
    return m_waiting.empty() ? Next::OnSchedule() : Next::Now();
}

std::vector<EventPtr> Intake::TakeBatch() {
    std::vector<EventPtr> batch;
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_dispatching = true;
    while (!m_waiting.empty() && batch.size() < kBatch) {
        batch.push_back(std::move(m_waiting.front()));
        m_waiting.pop_front();
        if (!batch.back()->kept) {
            m_unkept.pop_front();  // it was the first of them
        }
    }
    m_in_hand = batch.size();
    return batch;
}

void Intake::ReturnBatch(std::vector<Dispatch>&& batch) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_dispatching = false;
    m_in_hand = 0;
    if (m_closed) {
        return;
    }
    for (auto dispatch = batch.rbegin(); dispatch != batch.rend(); ++dispatch) {
        m_waiting.push_front(std::move(dispatch->event));
        if (!m_waiting.front()->kept) {
            m_unkept.push_front(m_waiting.begin());
        }
    }
}

bool Intake::Keep(const std::vector<Dispatch>& batch) {
    std::vector<Dispatched> dispatched;
    for (const Dispatch& dispatch : batch) {
        if (!dispatch.event->kept) {
            continue;
        }
        Dispatched one{dispatch.event->sequence, {}};
        for (const Destination* destination : dispatch.destinations) {
            one.consumers.push_back(destination->path);
        }
        dispatched.push_back(std::move(one));
    }
    if (dispatched.empty()) {
        return true;
    }
    try {
        m_store->Dispatch(dispatched);
        return true;
    } catch (const StoreError& error) {
        m_log.Tell(m_channel + " store", std::string(error.what()) + " The events of channel " + m_channel +
                                             " wait until it works again.");
        return false;
    }
}

}  // namespace qv_notify
