#include "services/notify/delivery/client_notices.h"

#include <tao/ORB.h>

#include <utility>

namespace qv_notify {

void ClientNotices::Post(std::function<void()> call) {
    std::function<void()> left_out;  // destroyed without the lock
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (m_calls.size() >= kMost) {
            left_out = std::move(m_calls.front());
            m_calls.pop_front();
        }
        m_calls.push_back(std::move(call));
    }
    m_pool.Schedule(shared_from_this());
}

Job::Next ClientNotices::Run() {
    std::function<void()> call;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (m_calls.empty()) {
            return Next::OnSchedule();
        }
        call = std::move(m_calls.front());
        m_calls.pop_front();
    }
    try {
        call();
    } catch (const CORBA::Exception&) {
        // Whether it is still there shows when it matters.
    }
    return Next::Now();
}

}  // namespace qv_notify
