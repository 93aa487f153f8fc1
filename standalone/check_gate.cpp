#include "standalone/check_gate.h"

namespace qv_standalone {

unsigned CheckGate::Waiting() const {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_waiting;
}

bool CheckGate::Enter() {
    std::unique_lock<std::mutex> lock(m_lock);
    if (m_inside >= m_max_inside) {
        if (m_waiting >= m_max_waiting) {
            return false;
        }
        ++m_waiting;
        m_free.wait(lock, [this] { return m_inside < m_max_inside; });
        --m_waiting;
    }
    ++m_inside;
    return true;
}

void CheckGate::Leave() {
    {
        std::lock_guard<std::mutex> guard(m_lock);
        --m_inside;
    }
    m_free.notify_one();
}

}  // namespace qv_standalone
