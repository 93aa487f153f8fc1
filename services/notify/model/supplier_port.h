// The way to a supplier.
#pragma once

#include <orbsvcs/CosNotifyCommC.h>

#include <memory>

#include "services/notify/delivery/client_notices.h"
#include "services/notify/delivery/type_news.h"

namespace qv_notify {

/// The way to a structured push supplier: what it is told, it is told on a thread of the pool, which outlives
/// this. Holds a count of the reference. Any thread may call, and none waits for the supplier.
class SupplierPort {
  public:
    SupplierPort(WorkPool& pool, CosNotifyComm::StructuredPushSupplier_ptr supplier);

    /// Of several changes that wait for a supplier that hangs it is told as one.
    void SubscriptionChange(const CosNotification::EventTypeSeq& added,
                            const CosNotification::EventTypeSeq& removed);
    void Disconnect();

  private:
    struct Untold;

    const CosNotifyComm::StructuredPushSupplier_var m_supplier;
    const std::shared_ptr<Untold> m_untold;
    const std::shared_ptr<ClientNotices> m_notices;
};

}  // namespace qv_notify
