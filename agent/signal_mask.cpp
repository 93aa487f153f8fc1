#include "agent/signal_mask.h"

#include <signal.h>

#include <cerrno>

namespace NS_CORBA {

void BlockAllSignals() {
    sigset_t signals;
    sigfillset(&signals);
    const int result = pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    if (result != 0) {
        errno = result;
    }
}

}  // namespace NS_CORBA
