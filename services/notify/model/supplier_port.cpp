#include "services/notify/model/supplier_port.h"

#include <utility>

namespace qv_notify {

void ClientNotices::Post(std::function<void()> call) {
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_calls.push_back(std::move(call));
    }
    m_pool.Schedule(shared_from_this());
}

Job::Next ClientNotices::Run() {
    std::function<void()> call;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (m_calls.empty()) {
            return Next::OnSchedule();
        }
        call = std::move(m_calls.front());
        m_calls.pop_front();
    }
    try {
        call();
    } catch (const CORBA::Exception&) {
        // Whether it is still there shows when it matters.
    }
    return Next::Now();
}

SupplierPort::SupplierPort(WorkPool& pool, CosNotifyComm::StructuredPushSupplier_ptr supplier)
    : m_supplier(CosNotifyComm::StructuredPushSupplier::_duplicate(supplier)),
      m_notices(std::make_shared<ClientNotices>(pool)) {}

void SupplierPort::SubscriptionChange(const CosNotification::EventTypeSeq& added,
                                      const CosNotification::EventTypeSeq& removed) {
    m_notices->Post(
        [supplier = m_supplier, added, removed] { supplier->subscription_change(added, removed); });
}

void SupplierPort::Disconnect() {
    m_notices->Post([supplier = m_supplier] { supplier->disconnect_structured_push_supplier(); });
}

}  // namespace qv_notify
