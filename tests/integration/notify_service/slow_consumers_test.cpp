// Consumers that hang, die or are away: what the others notice of it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include "tests/integration/notify_service/channel_run.h"
#include "tests/support/free_port.h"

namespace {

using namespace qv_test;
using testing::HasSubstr;

CosNotifyChannelAdmin::StructuredProxyPushSupplier_var ConnectReference(
    CosNotifyChannelAdmin::ConsumerAdmin_ptr admin, const std::string& reference) {
    CosNotifyChannelAdmin::ProxyID id = 0;
    const auto proxy = CosNotifyChannelAdmin::ProxySupplier_var(
        admin->obtain_notification_push_supplier(CosNotifyChannelAdmin::STRUCTURED_EVENT, id));
    auto structured = CosNotifyChannelAdmin::StructuredProxyPushSupplier_var(
        CosNotifyChannelAdmin::StructuredProxyPushSupplier::_narrow(proxy.in()));
    const CORBA::Object_var object = ClientOrb()->string_to_object(reference.c_str());
    const auto consumer = CosNotifyComm::StructuredPushConsumer_var(
        CosNotifyComm::StructuredPushConsumer::_unchecked_narrow(object.in()));
    structured->connect_structured_push_consumer(consumer.in());
    return structured;
}

class ConsumerProcess {
  public:
    explicit ConsumerProcess(int port)
        : m_process({QV_CONSUMER_PROCESS, "-ORBEndpoint", "iiop://127.0.0.1:" + std::to_string(port)}) {
        EXPECT_TRUE(m_process.WaitForOut("ready")) << m_process.Err();
    }
    bool WaitForEvent(int number) const {
        return m_process.WaitForOut("event " + std::to_string(number) + ".");
    }
    std::string Got() const { return m_process.Out(); }
    void Kill() { m_process.Kill(); }
    /// It answers what it was asked, closes its connections, and ends.
    void End() {
        m_process.Signal(SIGTERM);
        EXPECT_EQ(m_process.Wait(), 0);
    }

  private:
    ChildProcess m_process;
};

std::string ReferenceAt(int port) {
    return "corbaloc:iiop:127.0.0.1:" + std::to_string(port) + "/consumer";
}

TEST(SlowConsumers, HangingOnesCostTheOthersNothing) {
    NotifyServiceRun service;
    const Channel channel(service);
    const Hang hang;
    std::vector<PortableServer::Servant_var<RecordingConsumer>> hanging;
    for (int i = 0; i < 8; ++i) {
        hanging.push_back(RecordingConsumer::Connect(channel.consumers.in(), hang.Hook()));
    }
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    const auto start = std::chrono::steady_clock::now();
    PushFromTo(*supplier, 1, 2000);
    ASSERT_TRUE(consumer->WaitForCount(2000));
    // All of it within the time-out of the first call that hangs.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_EQ(consumer->Numbers(), NumbersFromTo(1, 2000));
    for (const auto& one : hanging) {
        EXPECT_EQ(one->Count(), 0U);
    }
}

TEST(SlowConsumers, OneThatHangsGetsEverythingInTheEnd) {
    NotifyServiceRun service({"--call-timeout", "200"});
    const Channel channel(service);
    const Hang hang;
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in(), hang.Hook());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    PushFromTo(*supplier, 1, 20);
    ASSERT_TRUE(WaitForSaid(service, "is suspect")) << service.Said();
    EXPECT_TRUE(WaitForSaid(service, "may get event 1 twice")) << service.Said();
    hang.End();
    ASSERT_TRUE(WaitForSaid(service, "is online")) << service.Said();
    ASSERT_TRUE(WaitFor([&] {
        const std::vector<std::int32_t> numbers = consumer->Numbers();
        return !numbers.empty() && numbers.back() == 20;
    }));
    // The calls that hung arrived as well, all with the first event.
    std::vector<std::int32_t> numbers = consumer->Numbers();
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    EXPECT_EQ(numbers, NumbersFromTo(1, 20));
    EXPECT_EQ(TimesSaid(service, "is suspect"), 1U);
}

TEST(SlowConsumers, ADeadOneIsCalledAgainOnceItIsBack) {
    NotifyServiceRun service;
    const Channel channel(service);
    const int port = FreePort();
    auto process = std::make_unique<ConsumerProcess>(port);
    const auto proxy = ConnectReference(channel.consumers.in(), ReferenceAt(port));
    const auto other = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    PushFromTo(*supplier, 1, 10);
    ASSERT_TRUE(process->WaitForEvent(10));
    process->Kill();
    PushFromTo(*supplier, 11, 30);
    ASSERT_TRUE(other->WaitForCount(30));
    ASSERT_TRUE(WaitForSaid(service, "is suspect")) << service.Said();
    EXPECT_THAT(service.Said(), HasSubstr("127.0.0.1:" + std::to_string(port)));
    process = std::make_unique<ConsumerProcess>(port);
    ASSERT_TRUE(process->WaitForEvent(30));
    // The answer to the last event before its end may have been lost with it.
    std::string got = process->Got();
    if (const std::size_t again = got.find("event 10.\n"); again != std::string::npos) {
        got.erase(again, std::string("event 10.\n").size());
    }
    std::string expected = "ready\n";
    for (int number = 11; number <= 30; ++number) {
        expected += "event " + std::to_string(number) + ".\n";
    }
    EXPECT_EQ(got, expected);
    EXPECT_TRUE(WaitForSaid(service, "is online")) << service.Said();
}

// The connection is closed by a consumer that is quickly back: nothing to tell anybody.
TEST(SlowConsumers, AConnectionThatWasClosedIsBoundAnew) {
    NotifyServiceRun service;
    const Channel channel(service);
    const int port = FreePort();
    auto process = std::make_unique<ConsumerProcess>(port);
    const auto proxy = ConnectReference(channel.consumers.in(), ReferenceAt(port));
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    PushFromTo(*supplier, 1, 1);
    ASSERT_TRUE(process->WaitForEvent(1));
    process->End();
    process = std::make_unique<ConsumerProcess>(port);
    PushFromTo(*supplier, 2, 2);
    ASSERT_TRUE(process->WaitForEvent(2));
    EXPECT_EQ(TimesSaid(service, "is suspect"), 0U) << service.Said();
}

TEST(SlowConsumers, OneThatIsAwayForTooLongLosesItsProxy) {
    NotifyServiceRun service({"--give-up-after", "1"});
    const Channel channel(service);
    const auto proxy = ConnectReference(channel.consumers.in(), ReferenceAt(FreePort()));
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    PushFromTo(*supplier, 1, 1);
    ASSERT_TRUE(WaitForSaid(service, "is gone")) << service.Said();
    EXPECT_TRUE(WaitFor([&] {
        const CosNotifyChannelAdmin::ProxyIDSeq_var ids = channel.consumers->push_suppliers();
        return ids->length() == 0;
    }));
    EXPECT_THROW(proxy->MyType(), CORBA::OBJECT_NOT_EXIST);
}

TEST(SlowConsumers, OneThatDoesNotExistAnyMoreLosesItsProxy) {
    NotifyServiceRun service;
    const Channel channel(service, true);
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const auto other = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    consumer->End();
    PushFromTo(*supplier, 1, 3);
    ASSERT_TRUE(other->WaitForCount(3));
    EXPECT_TRUE(WaitForSaid(service, "is gone")) << service.Said();
    EXPECT_TRUE(WaitFor([&] {
        const CosNotifyChannelAdmin::ProxyIDSeq_var ids = channel.consumers->push_suppliers();
        return ids->length() == 1;
    }));
    EXPECT_EQ(TimesSaid(service, "is gone"), 1U);
}

TEST(SlowConsumers, AnEventThatOneRefusesIsDroppedAfterThreeTries) {
    NotifyServiceRun service;
    const Channel channel(service);
    std::atomic<int> tries{0};
    const auto consumer = RecordingConsumer::Connect(
        channel.consumers.in(), [&](const CosNotification::StructuredEvent& event) {
            if (NumberOf(event) == 2) {
                ++tries;
                throw CORBA::NO_PERMISSION(0, CORBA::COMPLETED_NO);
            }
        });
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    PushFromTo(*supplier, 1, 3);
    ASSERT_TRUE(consumer->WaitForCount(2));
    EXPECT_EQ(consumer->Numbers(), (std::vector<std::int32_t>{1, 3}));
    EXPECT_EQ(tries, 3);
    EXPECT_TRUE(WaitForSaid(service, "refuses it")) << service.Said();
}

}  // namespace
