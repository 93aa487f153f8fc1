#include "demo/agent/stop_signal.h"

#include <pthread.h>
#include <signal.h>

#include <cstdlib>
#include <string>
#include <thread>

#include "demo/agent/console.h"

namespace qv_demo {
namespace {

sigset_t EndingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&signals, number);
    }
    return signals;
}

const char* NameOf(int number) {
    return number == SIGINT ? "Ctrl-C" : number == SIGTERM ? "SIGTERM" : "SIGHUP";
}

}  // namespace

StopSignal::StopSignal() {
    const sigset_t signals = EndingSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread([this] { Take(); }).detach();
}

void StopSignal::Wait() {
    std::unique_lock<std::mutex> lock(mutex_);
    came_.wait(lock, [this] { return stop_; });
}

void StopSignal::Take() {
    const sigset_t signals = EndingSignals();
    int number = 0;
    sigwait(&signals, &number);
    Say(std::string(NameOf(number)) + ": stopping, which takes some seconds; once more ends at once");
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        stop_ = true;
    }
    came_.notify_all();
    sigwait(&signals, &number);
    Say("ended at once");
    std::_Exit(128 + number);
}

}  // namespace qv_demo
