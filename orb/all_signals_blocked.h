// Threads that leave the process's signals to others.
#pragma once

#include <signal.h>

namespace qv_orb {

/// Blocks all signals of the calling thread while it exists; a thread that is started meanwhile has them
/// blocked for good. Ends on the thread that made it.
class AllSignalsBlocked {
  public:
    AllSignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, &m_before);
    }
    ~AllSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    AllSignalsBlocked(const AllSignalsBlocked&) = delete;
    AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;

  private:
    sigset_t m_before{};
};

}  // namespace qv_orb
