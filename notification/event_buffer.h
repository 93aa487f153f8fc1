#pragma once

#include <ace/Thread_Semaphore.h>

#include "notification/internal_api.h"

namespace NS_CORBA {

/// The lock of the supplier manager's buffer and of its view of the channel; with single-thread pushing also
/// of the push itself. Not recursive.
extern QV_INTERNAL_API ACE_Thread_Semaphore g_semEventBuffer;

/// Holds g_semEventBuffer. Where it can't be taken its owner goes on without it, and nothing is released. One
/// object belongs to one thread.
class QV_INTERNAL_API EventBufferGuard {
  public:
    EventBufferGuard() { Take(); }
    ~EventBufferGuard() { Release(); }
    EventBufferGuard(const EventBufferGuard&) = delete;
    EventBufferGuard& operator=(const EventBufferGuard&) = delete;

    /// Waits for the lock; not to be called while it is held.
    void Take();
    /// Gives the lock back, if it is held.
    void Release();

  private:
    bool m_locked = false;
};

}  // namespace NS_CORBA
