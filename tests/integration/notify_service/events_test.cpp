// Events from suppliers to consumers, through the service as a process of its own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/integration/notify_service/channel_run.h"

namespace {

using namespace qv_test;
using testing::ElementsAre;

TEST(NotifyServiceEvents, ReachEveryConsumerInOrder) {
    NotifyServiceRun service;
    const Channel channel(service);
    const auto one = RecordingConsumer::Connect(channel.consumers.in());
    const auto other = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    std::vector<std::int32_t> pushed;
    for (std::int32_t number = 0; number < 1000; ++number) {
        supplier->Push(EventOf("NT_ALARM", number));
        pushed.push_back(number);
    }
    ASSERT_TRUE(one->WaitForCount(1000));
    ASSERT_TRUE(other->WaitForCount(1000));
    EXPECT_EQ(one->Numbers(), pushed);
    EXPECT_EQ(other->Numbers(), pushed);
    EXPECT_EQ(service.Stop(), 0);
}

TEST(NotifyServiceEvents, PassTheFiltersOfAdminAndProxy) {
    NotifyServiceRun service;
    const Channel channel(service);
    const auto all = RecordingConsumer::Connect(channel.consumers.in());
    const auto some = RecordingConsumer::Connect(channel.consumers.in());
    AddFilter(channel.channel.in(), some->Proxy(),
              "$number > 5 and $number < 8 and $type_name == 'NT_ALARM'");
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    for (std::int32_t number = 0; number < 10; ++number) {
        supplier->Push(EventOf("NT_ALARM", number));
    }
    ASSERT_TRUE(all->WaitForCount(10));
    ASSERT_TRUE(some->WaitForCount(2));
    EXPECT_THAT(some->Numbers(), ElementsAre(6, 7));
}

TEST(NotifyServiceEvents, OfPersistentChannelsOutliveTheProcess) {
    NotifyServiceRun service;
    const Channel channel(service, true);
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    consumer->Proxy()->suspend_connection();
    for (std::int32_t number = 0; number < 20; ++number) {
        supplier->Push(EventOf("NT_ALARM", number));
    }
    service.Kill();
    service.Start();
    EXPECT_EQ(consumer->Count(), 0U);
    supplier->PushUntilTaken(EventOf("NT_ALARM", 20));
    consumer->Proxy()->resume_connection();
    ASSERT_TRUE(consumer->WaitForCount(21)) << service.Said();
    EXPECT_EQ(consumer->Numbers().front(), 0);
    EXPECT_EQ(consumer->Numbers().back(), 20);
}

}  // namespace
