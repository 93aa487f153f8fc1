#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "notification/event_buffer.h"
#include "notification/eventmgr.h"
#include "notification/ref_count.h"
#include "notification/supplier.h"
#include "notification/supplier_impl.h"
#include "tests/unit/agent/agent_fixture.h"
#include "tests/unit/notification/fake_channel.h"
#include "tests/unit/notification/noting_callback.h"
#include "tests/unit/notification/scripted_waits.h"

namespace NS_CORBA {

/// Opens a supplier manager. What the lock guards is read and written under it.
class SuppilerMgrProbe {
  public:
    explicit SuppilerMgrProbe(SuppilerMgr& manager) : m_manager(manager) {}

    std::atomic<bool>& Broken() { return m_manager.m_bChannelBroken; }
    std::atomic<bool>& WasBroken() { return m_manager.m_bChannelWasBroken; }
    std::atomic<std::int32_t>& RestoreCount() { return m_manager.m_nRestoreCount; }
    std::atomic<bool>& Exit() { return m_manager.m_bExit; }
    ACE_Event& WakeEvent() { return m_manager.m_wakeEvent; }
    RefCount<SuppilerImpl>*& Servant() { return m_manager.m_pSuppilerImpl; }
    std::set<std::string> Types() { return m_manager.m_setRegisteredTypes; }
    CosNotifyChannelAdmin::EventChannel_var& Channel() { return m_manager.m_channel; }
    CosNotifyChannelAdmin::SupplierAdmin_var& Admin() { return m_manager.m_supplierAdmin; }
    CosNotifyChannelAdmin::StructuredProxyPushConsumer_var& Proxy() {
        return m_manager.m_pSuppilerImpl->m_proxyConsumer;
    }
    PortableServer::POA_var& Poa() { return m_manager.m_pSuppilerImpl->m_poa; }

    std::vector<CosNotification::StructuredEvent> Buffer() {
        const EventBufferGuard guard;
        return {m_manager.m_eventBuffer.begin(), m_manager.m_eventBuffer.end()};
    }
    void Put(const CosNotification::StructuredEvent& event) {
        const EventBufferGuard guard;
        m_manager.m_eventBuffer.push_back(event);
    }
    void ClearBuffer() {
        const EventBufferGuard guard;
        m_manager.m_eventBuffer.clear();
    }

  private:
    SuppilerMgr& m_manager;
};

}  // namespace NS_CORBA

namespace qv_test {

using CosNotification::StructuredEvent;
using NS_CORBA::EventBufferGuard;
using NS_CORBA::EventMgr;
using NS_CORBA::SuppilerMgr;

inline constexpr const char* kNotify = "corbanotify";

/// An event of that type with `entries` filterable values "value 0", "value 1" and so on. `name` tells events
/// apart: it stands in the body, which the library doesn't touch.
StructuredEvent MakeEvent(const std::string& type, const std::string& name = "", CORBA::ULong entries = 1);

std::string NameOf(const StructuredEvent& event);
std::vector<std::string> NamesOf(const std::vector<StructuredEvent>& events);
/// The string in the filterable entry; "(none)" when there is none.
std::string FilterableText(const StructuredEvent& event, CORBA::ULong index = 0);
/// The value of the one header property "Timeout"; fails the test when the header is another.
CORBA::ULongLong TimeoutOf(const StructuredEvent& event);

/// A supplier manager with a real ORB, a scripted notification service, a callback object that notes its
/// calls, logs that end in memory, and waits and a clock that take no time.
class SupplierTest : public AgentTest {
  protected:
    using Texts = std::vector<std::string>;

    /// @param items settings beyond the usual ones
    explicit SupplierTest(const std::vector<std::pair<std::string, std::string>>& items = {});
    ~SupplierTest() override;

    /// NotifyServiceInit, and a state as if a pusher had come by since; forgets what was logged and called.
    void EnterService();
    /// A channel that is out of service and known to be.
    void LeaveService();
    NotifyScript& script() { return service->script(); }

    /// The texts of the system channel, in order.
    Texts Traces();
    /// Fails unless the system channel holds exactly these, each with the position of a call in that source.
    void ExpectTraces(const std::string& file, const Texts& texts);
    void ExpectTraced(const std::string& file, const std::string& text);
    void ExpectDebug(const std::string& file, int level, const std::string& text);
    void ExpectException(const std::string& file, const std::string& text);
    Texts NotifyRecords();
    /// The channel's state by its two flags, as a word.
    std::string State();
    static bool BufferIsLocked();
    void Forget();

    ScriptedWaits waits;
    CORBA::ORB_var orb;
    std::unique_ptr<FakeNotifyService> service;
    NotingCallBack callback;
    std::unique_ptr<SuppilerMgr> manager;
    std::unique_ptr<NS_CORBA::SuppilerMgrProbe> probe;

  private:
    void ExpectPosition(const LogEntry& entry, const std::string& file);
};

}  // namespace qv_test
