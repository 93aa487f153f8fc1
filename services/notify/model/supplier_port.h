// Calls to clients that no event is in.
#pragma once

#include <orbsvcs/CosNotifyCommC.h>

#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include "services/notify/delivery/work_pool.h"

namespace qv_notify {

/// Tells a client things in the order in which they happened, on a thread of the pool. A client that fails is
/// not asked again: these calls are courtesies. Any thread may call.
class ClientNotices : public Job {
  public:
    explicit ClientNotices(WorkPool& pool) : m_pool(pool) {}

    /// `call` may raise CORBA exceptions.
    void Post(std::function<void()> call);
    Next Run() override;
    bool Slow() const override { return true; }

  private:
    WorkPool& m_pool;
    std::mutex m_mutex;
    std::deque<std::function<void()>> m_calls;
};

/// The way to a structured push supplier.
class SupplierPort {
  public:
    SupplierPort(WorkPool& pool, CosNotifyComm::StructuredPushSupplier_ptr supplier);

    void SubscriptionChange(const CosNotification::EventTypeSeq& added,
                            const CosNotification::EventTypeSeq& removed);
    void Disconnect();

  private:
    const CosNotifyComm::StructuredPushSupplier_var m_supplier;
    const std::shared_ptr<ClientNotices> m_notices;
};

}  // namespace qv_notify
