#include "tests/e2e/notify_accounting/suppliers.h"

#include <algorithm>

#include "orb/portability.h"
#include "tests/e2e/notify_accounting/account.h"
#include "tests/support/wait_for.h"

namespace qv_accounting {

Suppliers::Suppliers(CosNotifyChannelAdmin::SupplierAdmin_ptr admin, std::size_t threads, std::int32_t events)
    : m_supplier(qv_test::RecordingSupplier::Connect(admin)) {
    for (std::size_t index = 0; index < threads; ++index) {
        m_threads.push_back(std::make_unique<One>());
    }
    for (std::size_t index = 0; index < threads; ++index) {
        const std::int32_t own = events / static_cast<std::int32_t>(threads);
        m_threads[index]->thread = std::thread([this, index, own] { Work(index, own); });
    }
}

Suppliers::~Suppliers() {
    m_stopped = true;
    GoOn();
    for (const auto& one : m_threads) {
        one->thread.join();
    }
}

bool Suppliers::WaitForTaken(std::int64_t count) {
    while (m_taken < count) {
        const std::int64_t before = m_taken;
        const bool moved = qv_test::WaitFor(
            [&] { return m_taken >= count || m_taken - before > 1000 || !Failure().empty(); },
            std::chrono::seconds(60));
        if (!moved || !Failure().empty()) {
            return false;
        }
    }
    return true;
}

void Suppliers::Allow(std::int64_t count) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_allowed = std::max(m_allowed, count);
    m_changed.notify_all();
}

void Suppliers::Pause() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_paused = true;
    m_changed.wait(lock, [this] { return m_pushing == 0; });
}

void Suppliers::GoOn() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_paused = false;
    m_changed.notify_all();
}

std::string Suppliers::Failure() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_failure;
}

void Suppliers::Work(std::size_t index, std::int32_t events) {
    for (std::int32_t own = 0; own < events && BeginPush(); ++own) {
        const bool taken = PushUntilTaken(qv_test::EventOf("NT_ALARM", Number(index, own)));
        if (taken) {
            ++m_threads[index]->taken;
            ++m_taken;
        }
        EndPush();
        if (!taken) {
            return;
        }
    }
}

bool Suppliers::BeginPush() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_stopped || (!m_paused && m_begun < m_allowed); });
    if (m_stopped) {
        return false;
    }
    ++m_begun;
    ++m_pushing;
    return true;
}

void Suppliers::EndPush() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (--m_pushing == 0) {
        m_changed.notify_all();
    }
}

bool Suppliers::PushUntilTaken(const CosNotification::StructuredEvent& event) {
    while (!m_stopped) {
        try {
            m_supplier->Push(event);
            return true;
        } catch (const CORBA::SystemException& exception) {
            // While the service is away. Anything else would make an agent give its channel up.
            if (CORBA::COMM_FAILURE::_downcast(&exception) == nullptr &&
                CORBA::TRANSIENT::_downcast(&exception) == nullptr) {
                Fail(qv_orb::ExceptionText(exception));
                return false;
            }
            m_answers_lost += exception.completed() == CORBA::COMPLETED_MAYBE ? 1 : 0;
        } catch (const CORBA::Exception& exception) {
            Fail(qv_orb::ExceptionText(exception));
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return false;
}

void Suppliers::Fail(const std::string& reason) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_failure += "a push ended with " + reason + "\n";
}

}  // namespace qv_accounting
