#include "standalone/fork_count.h"

#include <pthread.h>

#include <atomic>

namespace qv_standalone {
namespace {

std::atomic<unsigned> g_forks{0};

bool CountForks() {
    return pthread_atfork(nullptr, nullptr, [] { g_forks.fetch_add(1, std::memory_order_relaxed); }) == 0;
}

}  // namespace

unsigned ForkCount() {
    static const bool counted = CountForks();
    (void)counted;
    return g_forks.load(std::memory_order_relaxed);
}

}  // namespace qv_standalone
