#include "demo/agent/housekeeper.h"

#include <chrono>

namespace qv_demo {
namespace {

constexpr std::chrono::seconds kInterval{1};

}  // namespace

Housekeeper::Housekeeper(const Ems& ems) : ems_(ems), thread_([this] { Run(); }) {}

Housekeeper::~Housekeeper() {
    Stop();
}

void Housekeeper::Stop() {
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        stop_ = true;
    }
    stopped_.notify_all();
    if (thread_.joinable()) {
        thread_.join();
    }
}

void Housekeeper::Run() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!stopped_.wait_for(lock, kInterval, [this] { return stop_; })) {
        lock.unlock();
        ems_.sessions.EndSilent();
        ems_.iterators.CloseExpired();
        lock.lock();
    }
}

}  // namespace qv_demo
