// Calls to clients that no event is in.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include "services/notify/delivery/work_pool.h"

namespace qv_notify {

/// Tells a client things in the order in which they happened, on a thread of the pool, which outlives this.
/// A client that fails is not asked again, and where more than kMost calls wait for one that hangs, the
/// oldest is left out: these calls are courtesies. Any thread may call.
class ClientNotices : public Job {
  public:
    static constexpr std::size_t kMost = 256;

    explicit ClientNotices(WorkPool& pool) : m_pool(pool) {}

    /// `call` may raise CORBA exceptions, and block for as long as the client takes or the time limit of
    /// calls.
    void Post(std::function<void()> call);
    Next Run() override;
    bool Slow() const override { return true; }

  private:
    WorkPool& m_pool;
    std::mutex m_mutex;
    std::deque<std::function<void()>> m_calls;
};

}  // namespace qv_notify
