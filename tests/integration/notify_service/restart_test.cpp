// What outlives SIGKILL and a new start on the same end point.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/integration/notify_service/channel_run.h"

namespace {

using namespace qv_test;
using testing::ElementsAre;

class Restart : public testing::Test {
  protected:
    /// `used`: something that the test has used before.
    void KillAndStart(CORBA::Object_ptr used) {
        service.Kill();
        service.Start();
        // The connections of this process to the one before are closed, which the next call finds out.
        ASSERT_TRUE(WaitFor([&] { return Answers(used); }));
        const CORBA::Object_var factory = ClientOrb()->string_to_object(service.Corbaloc().c_str());
        ASSERT_TRUE(WaitFor([&] { return Answers(factory.in()); }));
    }
    static bool Answers(CORBA::Object_ptr object) {
        try {
            static_cast<void>(object->_non_existent());
            return true;
        } catch (const CORBA::SystemException&) {
            return false;
        }
    }
    NotifyServiceRun service;
};

TEST_F(Restart, ReferencesAndIdsStay) {
    const Channel channel(service, true);
    CORBA::Long admin_id = 0;
    CORBA::Long supplier_admin_id = 0;
    const CosNotifyChannelAdmin::ConsumerAdmin_var admin =
        channel->new_for_consumers(CosNotifyChannelAdmin::OR_OP, admin_id);
    const CosNotifyChannelAdmin::SupplierAdmin_var supplier_admin =
        channel->new_for_suppliers(CosNotifyChannelAdmin::AND_OP, supplier_admin_id);
    const auto consumer = RecordingConsumer::Connect(admin.in());
    const auto supplier = RecordingSupplier::Connect(supplier_admin.in());
    const CosNotifyFilter::Filter_var filter =
        AddFilter(channel.channel.in(), consumer->Proxy(), "$number > 5");
    const auto factory = FactoryAt(service.Corbaloc());
    KillAndStart(channel.channel.in());

    const CosNotifyChannelAdmin::ChannelIDSeq_var channels = factory->get_all_channels();
    ASSERT_EQ(channels->length(), 1U);
    const CosNotifyChannelAdmin::EventChannel_var found = factory->get_event_channel(channels.in()[0]);
    EXPECT_TRUE(found->_is_equivalent(channel.channel.in()));
    EXPECT_EQ(admin->MyID(), admin_id);
    EXPECT_EQ(admin->MyOperator(), CosNotifyChannelAdmin::OR_OP);
    EXPECT_EQ(supplier_admin->MyID(), supplier_admin_id);
    const CosNotifyChannelAdmin::ProxyIDSeq_var ids = admin->push_suppliers();
    ASSERT_EQ(ids->length(), 1U);
    EXPECT_EQ(ids.in()[0], consumer->Id());
    const CosNotifyChannelAdmin::ProxyConsumer_var proxy = supplier_admin->get_proxy_consumer(supplier->Id());
    EXPECT_TRUE(proxy->_is_equivalent(supplier->Proxy()));
    const CosNotifyFilter::ConstraintInfoSeq_var constraints = filter->get_all_constraints();
    ASSERT_EQ(constraints->length(), 1U);
    EXPECT_STREQ(constraints.in()[0].constraint_expression.constraint_expr.in(), "$number > 5");
    const CosNotifyFilter::FilterIDSeq_var filters = consumer->Proxy()->get_all_filters();
    EXPECT_EQ(filters->length(), 1U);

    const auto another = RecordingConsumer::Connect(admin.in());
    EXPECT_GT(another->Id(), consumer->Id()) << "no id is given twice";
}

TEST_F(Restart, ConsumersAreCalledAgainAndFiltersAndSubscriptionsHold) {
    const Channel channel(service, true);
    const auto all = RecordingConsumer::Connect(channel.consumers.in());
    const auto filtered = RecordingConsumer::Connect(channel.consumers.in());
    AddFilter(channel.channel.in(), filtered->Proxy(), "$number > 5");
    const auto subscribed = RecordingConsumer::Connect(channel.consumers.in());
    subscribed->Proxy()->subscription_change(TypesOf({"NT_TCA"}), TypesOf({}));
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    KillAndStart(channel.channel.in());
    for (std::int32_t number = 1; number <= 7; ++number) {
        supplier->PushUntilTaken(EventOf(number == 7 ? "NT_TCA" : "NT_ALARM", number));
    }
    ASSERT_TRUE(all->WaitForCount(7)) << service.Said();
    ASSERT_TRUE(filtered->WaitForCount(2));
    ASSERT_TRUE(subscribed->WaitForCount(1));
    EXPECT_EQ(all->Numbers(), NumbersFromTo(1, 7));
    EXPECT_THAT(filtered->Numbers(), ElementsAre(6, 7));
    EXPECT_THAT(subscribed->Numbers(), ElementsAre(7));
    EXPECT_THAT(all->OfferedTypes(), testing::IsEmpty()) << "nothing has changed for anybody";
}

TEST_F(Restart, EventsForAConsumerThatHangsAreDeliveredAfterwards) {
    const Channel channel(service, true);
    Hang hang;
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in(), hang.Hook());
    const auto other = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    PushFromTo(*supplier, 1, 50);
    ASSERT_TRUE(other->WaitForCount(50));
    service.Kill();
    hang.End();
    service.Start();
    ASSERT_TRUE(consumer->WaitForCount(51)) << service.Said();
    std::vector<std::int32_t> numbers = consumer->Numbers();
    EXPECT_EQ(numbers.front(), 1) << "the call that hung";
    numbers.erase(numbers.begin());
    EXPECT_EQ(numbers, NumbersFromTo(1, 50));
}

// They are alike to the last octet, and none of them repeats a push that was not answered.
TEST_F(Restart, HeartbeatsGoOn) {
    const Channel channel(service, true);
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    for (int i = 0; i < 3; ++i) {
        supplier->Push(EventOf("NT_HEARTBEAT", 1));
    }
    ASSERT_TRUE(consumer->WaitForCount(3));
    KillAndStart(channel.channel.in());
    for (int i = 0; i < 3; ++i) {
        supplier->PushUntilTaken(EventOf("NT_HEARTBEAT", 1));
    }
    EXPECT_TRUE(consumer->WaitForCount(6)) << service.Said();
    EXPECT_EQ(TimesSaid(service, "pushed an event again"), 0U);
}

TEST_F(Restart, NothingIsLostBetweenOneSupplierAndItsConsumers) {
    const Channel channel(service, true);
    const auto one = RecordingConsumer::Connect(channel.consumers.in());
    const auto other = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    for (std::int32_t number = 1; number <= 200; ++number) {
        if (number == 60 || number == 120) {
            KillAndStart(channel.channel.in());
        }
        supplier->PushUntilTaken(EventOf("NT_ALARM", number));
    }
    for (const auto& consumer : {one, other}) {
        ASSERT_TRUE(WaitFor([&] {
            const std::vector<std::int32_t> numbers = consumer->Numbers();
            return !numbers.empty() && numbers.back() == 200;
        })) << service.Said();
        // At least once, and in order: an event in flight may come a second time.
        std::vector<std::int32_t> numbers = consumer->Numbers();
        EXPECT_LE(numbers.size(), 210U);
        std::sort(numbers.begin(), numbers.end());
        numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
        EXPECT_EQ(numbers, NumbersFromTo(1, 200));
    }
}

TEST_F(Restart, ASuspendedConsumerStaysSuspended) {
    const Channel channel(service, true);
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    consumer->Proxy()->suspend_connection();
    PushFromTo(*supplier, 1, 5);
    KillAndStart(channel.channel.in());
    EXPECT_THROW(consumer->Proxy()->suspend_connection(), CosNotifyChannelAdmin::ConnectionAlreadyInactive);
    EXPECT_EQ(consumer->Count(), 0U);
    consumer->Proxy()->resume_connection();
    ASSERT_TRUE(consumer->WaitForCount(5));
    EXPECT_EQ(consumer->Numbers(), NumbersFromTo(1, 5));
}

TEST_F(Restart, PropertiesHoldAgain) {
    const Channel channel(service, true);
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    consumer->Proxy()->set_qos(Properties({PropertyOf("MaxEventsPerConsumer", CORBA::Long{3})}));
    consumer->Proxy()->suspend_connection();
    const auto later = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    KillAndStart(channel.channel.in());
    for (std::int32_t number = 1; number <= 10; ++number) {
        supplier->PushUntilTaken(EventOf("NT_ALARM", number));
    }
    ASSERT_TRUE(later->WaitForCount(10)) << "an event is queued for the one before ahead of this one";
    consumer->Proxy()->resume_connection();
    ASSERT_TRUE(consumer->WaitForCount(3));
    EXPECT_EQ(consumer->Numbers(), NumbersFromTo(8, 10));
}

TEST_F(Restart, ChannelsThatAreNotKeptAreGone) {
    const Channel kept(service, true);
    const Channel brief(service, false);
    const auto factory = FactoryAt(service.Corbaloc());
    KillAndStart(kept.channel.in());
    const CosNotifyChannelAdmin::ChannelIDSeq_var channels = factory->get_all_channels();
    EXPECT_EQ(channels->length(), 1U);
    EXPECT_THROW(brief.channel->get_qos(), CORBA::OBJECT_NOT_EXIST);
    EXPECT_NO_THROW(CosNotification::QoSProperties_var(kept.channel->get_qos()));
}

TEST_F(Restart, WhatWasDestroyedStaysSo) {
    const Channel channel(service, true);
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const CosNotifyFilter::Filter_var filter =
        AddFilter(channel.channel.in(), consumer->Proxy(), "$number > 5");
    filter->destroy();
    const auto left = RecordingConsumer::Connect(channel.consumers.in());
    left->Proxy()->disconnect_structured_push_supplier();
    const Channel destroyed(service, true);
    destroyed.channel->destroy();
    KillAndStart(channel.channel.in());
    const auto factory = FactoryAt(service.Corbaloc());
    const CosNotifyChannelAdmin::ChannelIDSeq_var channels = factory->get_all_channels();
    EXPECT_EQ(channels->length(), 1U);
    const CosNotifyChannelAdmin::ProxyIDSeq_var ids = channel.consumers->push_suppliers();
    ASSERT_EQ(ids->length(), 1U);
    EXPECT_EQ(ids.in()[0], consumer->Id());
    const CosNotifyFilter::FilterIDSeq_var filters = consumer->Proxy()->get_all_filters();
    EXPECT_EQ(filters->length(), 0U);
    EXPECT_THROW(filter->remove_all_constraints(), CORBA::OBJECT_NOT_EXIST);
}

}  // namespace
