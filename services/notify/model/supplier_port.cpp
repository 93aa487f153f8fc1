#include "services/notify/model/supplier_port.h"

#include <mutex>
#include <utility>

namespace qv_notify {

struct SupplierPort::Untold {
    std::mutex mutex;
    TypeNews news;
    bool posted = false;
};

SupplierPort::SupplierPort(WorkPool& pool, CosNotifyComm::StructuredPushSupplier_ptr supplier)
    : m_supplier(CosNotifyComm::StructuredPushSupplier::_duplicate(supplier)),
      m_untold(std::make_shared<Untold>()),
      m_notices(std::make_shared<ClientNotices>(pool)) {}

void SupplierPort::SubscriptionChange(const CosNotification::EventTypeSeq& added,
                                      const CosNotification::EventTypeSeq& removed) {
    {
        const std::lock_guard<std::mutex> guard(m_untold->mutex);
        m_untold->news.Add(added, removed);
        if (std::exchange(m_untold->posted, true)) {
            return;
        }
    }
    m_notices->Post([supplier = m_supplier, untold = m_untold] {
        TypeNews news;
        {
            const std::lock_guard<std::mutex> guard(untold->mutex);
            std::swap(news, untold->news);
            untold->posted = false;
        }
        if (!news.Empty()) {
            supplier->subscription_change(news.Added(), news.Removed());
        }
    });
}

void SupplierPort::Disconnect() {
    m_notices->Post([supplier = m_supplier] { supplier->disconnect_structured_push_supplier(); });
}

}  // namespace qv_notify
