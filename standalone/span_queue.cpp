#include "standalone/span_queue.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace qv_standalone {

bool SpanQueue::Push(std::string&& span) {
    bool wake = false;
    {
        std::lock_guard<std::mutex> guard(m_lock);
        if (m_closed || m_spans.size() >= m_capacity) {
            ++m_dropped;
            return false;
        }
        m_spans.push_back(std::move(span));
        wake =
            m_awaited == Awaited::kAny || (m_awaited == Awaited::kHalf && m_spans.size() >= m_capacity / 2);
        if (wake) {
            m_awaited = Awaited::kNothing;  // one call of the system for a crowd of spans
        }
    }
    if (wake) {
        m_wake.notify_one();
    }
    return true;
}

std::vector<std::string> SpanQueue::Take(std::size_t max, Clock::duration idle, Clock::duration gather) {
    std::unique_lock<std::mutex> lock(m_lock);
    if (m_spans.empty() && !m_closed) {
        m_awaited = Awaited::kAny;
        m_wake.wait_for(lock, idle, [this] { return m_closed || !m_spans.empty(); });
    }
    if (!m_spans.empty() && m_spans.size() < m_capacity / 2 && !m_closed) {
        m_awaited = Awaited::kHalf;
        m_wake.wait_for(lock, gather, [this] { return m_closed || m_spans.size() >= m_capacity / 2; });
    }
    m_awaited = Awaited::kNothing;
    const auto end = m_spans.begin() + static_cast<std::ptrdiff_t>(std::min(max, m_spans.size()));
    std::vector<std::string> taken(std::make_move_iterator(m_spans.begin()), std::make_move_iterator(end));
    m_spans.erase(m_spans.begin(), end);
    return taken;
}

void SpanQueue::Close() {
    {
        std::lock_guard<std::mutex> guard(m_lock);
        m_closed = true;
    }
    m_wake.notify_all();
}

bool SpanQueue::Finished() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_closed && m_spans.empty();
}

void SpanQueue::CountDropped(std::uint64_t spans) {
    std::lock_guard<std::mutex> guard(m_lock);
    m_dropped += spans;
}

std::uint64_t SpanQueue::TakeDropped() {
    std::lock_guard<std::mutex> guard(m_lock);
    return std::exchange(m_dropped, 0);
}

}  // namespace qv_standalone
