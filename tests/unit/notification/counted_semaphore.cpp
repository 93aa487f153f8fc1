// This executable's own sem_wait and sem_post take the place of the system's for the libraries it loads, and
// pass on to them.
#include "tests/unit/notification/counted_semaphore.h"

#include <dlfcn.h>
#include <semaphore.h>

#include <atomic>
#include <cerrno>

#include "notification/event_buffer.h"

namespace {

std::atomic<bool> g_counting{false};
std::atomic<int> g_taken{0};
std::atomic<int> g_given{0};
std::atomic<int> g_failures{0};
std::atomic<int> g_error{0};

using Function = int (*)(sem_t*);

Function Next(const char* symbol) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, symbol));
}

bool IsOfBuffer(sem_t* semaphore) {
    return g_counting && semaphore == NS_CORBA::g_semEventBuffer.lock().sema_;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int sem_wait(sem_t* semaphore) {
    static const Function next = Next("sem_wait");
    if (IsOfBuffer(semaphore)) {
        ++g_taken;
        if (g_failures > 0) {
            --g_failures;
            errno = g_error;
            return -1;
        }
    }
    return next(semaphore);
}

extern "C" __attribute__((visibility("default"))) int sem_post(sem_t* semaphore) noexcept {
    static const Function next = Next("sem_post");
    if (IsOfBuffer(semaphore)) {
        ++g_given;
    }
    return next(semaphore);
}

namespace qv_test {

CountedSemaphore::CountedSemaphore() {
    g_taken = 0;
    g_given = 0;
    g_failures = 0;
    g_counting = true;
}

CountedSemaphore::~CountedSemaphore() {
    g_counting = false;
}

void CountedSemaphore::FailNext(int error, int times) {
    g_error = error;
    g_failures = times;
}

int CountedSemaphore::Taken() const {
    return g_taken;
}

int CountedSemaphore::Given() const {
    return g_given;
}

}  // namespace qv_test
