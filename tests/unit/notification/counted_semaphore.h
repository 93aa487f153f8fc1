#pragma once

namespace qv_test {

/// While it lives the takings and releases of the supplier's event buffer are counted, and some can be made
/// to fail. Link counted_semaphore.cpp into the test program itself. One object at a time.
class CountedSemaphore {
  public:
    CountedSemaphore();
    ~CountedSemaphore();
    CountedSemaphore(const CountedSemaphore&) = delete;
    CountedSemaphore& operator=(const CountedSemaphore&) = delete;

    /// The next `times` takings fail with `error`.
    void FailNext(int error, int times);
    /// Tries to take the lock, those that failed too.
    int Taken() const;
    int Given() const;
};

}  // namespace qv_test
