#include "notification/event_buffer.h"

#include <cerrno>

namespace NS_CORBA {

ACE_Thread_Semaphore g_semEventBuffer;

// A signal that interrupts the wait is no reason to go on without the lock.
void EventBufferGuard::Take() {
    int result = 0;
    do {
        result = g_semEventBuffer.acquire();
    } while (result == -1 && errno == EINTR);
    m_locked = result == 0;
}

void EventBufferGuard::Release() {
    if (m_locked) {
        m_locked = false;
        g_semEventBuffer.release();
    }
}

}  // namespace NS_CORBA
