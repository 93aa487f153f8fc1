#pragma once

#include <condition_variable>
#include <mutex>

namespace qv_standalone {

/// Lets only so many callers in at once and only so many more wait; all others are turned away at once. A
/// password check takes 64 MiB on purpose, so a crowd of callers could take all memory otherwise. Any thread
/// may call any operation.
class CheckGate {
  public:
    CheckGate(unsigned max_inside, unsigned max_waiting)
        : m_max_inside(max_inside), m_max_waiting(max_waiting) {}

    /// A stay inside; false when turned away.
    class Pass {
      public:
        explicit Pass(CheckGate& gate) : m_gate(gate), m_inside(gate.Enter()) {}
        ~Pass() {
            if (m_inside) {
                m_gate.Leave();
            }
        }
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;
        explicit operator bool() const { return m_inside; }

      private:
        CheckGate& m_gate;
        const bool m_inside;
    };

    unsigned Waiting() const;

  private:
    bool Enter();
    void Leave();

    const unsigned m_max_inside;
    const unsigned m_max_waiting;
    mutable std::mutex m_lock;
    std::condition_variable m_free;
    unsigned m_inside = 0;
    unsigned m_waiting = 0;
};

}  // namespace qv_standalone
