#include "demo/agent/calling_thread.h"

#include <chrono>
#include <utility>

#include "agent/corbabaseagentconfig.h"

namespace qv_demo {
namespace {

constexpr std::chrono::seconds kLongestWait{2};
constexpr unsigned long kLongestCall = 50000000;  // 5 s in units of 100 ns

void LimitCallsOfThisThread() {
    CORBA::ORB_var orb = NS_CORBA::CorbaBaseAgentConfig::Instance()->GetOrb();
    NS_CORBA::CorbaBaseAgentConfig::Instance()->SetCurrentThreadTimeOutPolicy(orb, kLongestCall);
}

}  // namespace

CallingThread::CallingThread(std::shared_ptr<Shared> shared, Work work)
    : shared_(std::move(shared)), thread_([kept = shared_, run = std::move(work)] {
          LimitCallsOfThisThread();
          std::unique_lock<std::mutex> lock(kept->mutex);
          run(lock);
          kept->ended = true;
          kept->changed.notify_all();
      }) {}

CallingThread::~CallingThread() {
    Stop();
}

void CallingThread::Stop() {
    if (!thread_.joinable()) {
        return;
    }
    std::unique_lock<std::mutex> lock(shared_->mutex);
    shared_->stop = true;
    shared_->changed.notify_all();
    const bool ended = shared_->changed.wait_for(lock, kLongestWait, [this] { return shared_->ended; });
    lock.unlock();
    if (ended) {
        thread_.join();
    } else {
        thread_.detach();
    }
}

}  // namespace qv_demo
