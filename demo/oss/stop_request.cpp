#include "demo/oss/stop_request.h"

#include <pthread.h>
#include <signal.h>

#include <initializer_list>

namespace qv_oss {
namespace {

sigset_t StopSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&signals, number);
    }
    return signals;
}

}  // namespace

void HoldStopSignals() {
    const sigset_t signals = StopSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

bool StopRequested(std::chrono::milliseconds patience) {
    const sigset_t signals = StopSignals();
    const timespec limit{patience.count() / 1000, patience.count() % 1000 * 1000000};
    return sigtimedwait(&signals, nullptr, &limit) > 0;
}

}  // namespace qv_oss
