// What holds a thread of a test until the test lets it go.
#pragma once

#include <condition_variable>
#include <mutex>

namespace qv_notify_test {

/// Any thread may call.
class Gate {
  public:
    void Open() {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_open = true;
        m_changed.notify_all();
    }
    void Wait() {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_open; });
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_open = false;
};

/// Opens a gate when a test ends, however it does.
class OpensAtEnd {
  public:
    explicit OpensAtEnd(Gate& gate) : m_gate(gate) {}
    ~OpensAtEnd() { m_gate.Open(); }
    OpensAtEnd(const OpensAtEnd&) = delete;
    OpensAtEnd& operator=(const OpensAtEnd&) = delete;

  private:
    Gate& m_gate;
};

}  // namespace qv_notify_test
