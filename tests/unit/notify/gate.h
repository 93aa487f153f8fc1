// What holds a thread of a test until the test lets it go.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>

namespace qv_notify_test {

/// Any thread may call. One that waits when the gate is opened gets out although the gate ends right then.
class Gate {
  public:
    void Open() {
        const std::lock_guard<std::mutex> guard(m_state->mutex);
        m_state->open = true;
        m_state->changed.notify_all();
    }
    void Wait() {
        const std::shared_ptr<State> state = m_state;
        std::unique_lock<std::mutex> lock(state->mutex);
        state->changed.wait(lock, [&state] { return state->open; });
    }

  private:
    struct State {
        std::mutex mutex;
        std::condition_variable changed;
        bool open = false;
    };
    const std::shared_ptr<State> m_state = std::make_shared<State>();
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
