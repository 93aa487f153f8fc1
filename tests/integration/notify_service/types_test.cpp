// What suppliers offer and consumers subscribe to, and who is told of it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/integration/notify_service/channel_run.h"

namespace {

using namespace qv_test;
namespace Admin = CosNotifyChannelAdmin;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

std::vector<std::string> NamesOf(const CosNotification::EventTypeSeq& types) {
    std::vector<std::string> names;
    for (CORBA::ULong i = 0; i < types.length(); ++i) {
        names.emplace_back(types[i].type_name.in());
    }
    return names;
}

class EventTypes : public testing::Test {
  protected:
    NotifyServiceRun service;
    Channel channel{service};
};

TEST_F(EventTypes, ConsumersAreToldWhatIsOffered) {
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    supplier->Proxy()->offer_change(TypesOf({"A", "B"}), TypesOf({}));
    EXPECT_TRUE(WaitFor([&] { return consumer->OfferedTypes().size() == 2; }));
    supplier->Proxy()->offer_change(TypesOf({}), TypesOf({"A"}));
    EXPECT_TRUE(WaitFor([&] { return consumer->OfferedTypes().size() == 3; }));
    EXPECT_THAT(consumer->OfferedTypes(), ElementsAre("+A", "+B", "-A"));
    supplier->Proxy()->disconnect_structured_push_consumer();
    EXPECT_TRUE(WaitFor([&] { return consumer->OfferedTypes().size() == 4; }));
    EXPECT_EQ(consumer->OfferedTypes().back(), "-B");
}

TEST_F(EventTypes, WhatTwoOfferIsToldOnce) {
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const auto one = RecordingSupplier::Connect(channel.suppliers.in());
    const auto other = RecordingSupplier::Connect(channel.suppliers.in());
    one->Proxy()->offer_change(TypesOf({"A"}), TypesOf({}));
    other->Proxy()->offer_change(TypesOf({"A"}), TypesOf({}));
    one->Proxy()->offer_change(TypesOf({}), TypesOf({"A"}));
    other->Proxy()->offer_change(TypesOf({"C"}), TypesOf({}));
    EXPECT_TRUE(WaitFor([&] { return consumer->OfferedTypes().size() == 2; }));
    EXPECT_THAT(consumer->OfferedTypes(), ElementsAre("+A", "+C"));
}

TEST_F(EventTypes, SuppliersAreToldWhatIsWanted) {
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    EXPECT_TRUE(WaitFor([&] { return supplier->SubscribedTypes().size() == 1; }));
    consumer->Proxy()->subscription_change(TypesOf({"A"}), TypesOf({}));
    EXPECT_TRUE(WaitFor([&] { return supplier->SubscribedTypes().size() == 3; }));
    EXPECT_THAT(supplier->SubscribedTypes(), UnorderedElementsAre("+*", "-*", "+A"));
}

TEST_F(EventTypes, ASubscriptionDecidesWhatAConsumerGets) {
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const auto all = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    consumer->Proxy()->subscription_change(TypesOf({"NT_T*"}), TypesOf({"*"}));
    supplier->Push(EventOf("NT_ALARM", 1));
    supplier->Push(EventOf("NT_TCA", 2));
    ASSERT_TRUE(all->WaitForCount(2));
    ASSERT_TRUE(consumer->WaitForCount(1));
    consumer->Proxy()->subscription_change(TypesOf({"*"}), TypesOf({}));
    supplier->Push(EventOf("NT_ALARM", 3));
    ASSERT_TRUE(consumer->WaitForCount(2));
    EXPECT_THAT(consumer->Numbers(), ElementsAre(2, 3));
}

TEST_F(EventTypes, ASubscriptionOfAnAdminIsThatOfItsProxies) {
    CORBA::Long id = 0;
    const Admin::ConsumerAdmin_var admin = channel->new_for_consumers(Admin::AND_OP, id);
    const auto before = RecordingConsumer::Connect(admin.in());
    admin->subscription_change(TypesOf({"B"}), TypesOf({}));
    const auto after = RecordingConsumer::Connect(admin.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    supplier->Push(EventOf("A", 1));
    supplier->Push(EventOf("B", 2));
    for (const auto& consumer : {before, after}) {
        ASSERT_TRUE(consumer->WaitForCount(1));
        EXPECT_THAT(consumer->Numbers(), ElementsAre(2));
    }
}

TEST_F(EventTypes, CanBeAskedFor) {
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    channel.suppliers->offer_change(TypesOf({"A"}), TypesOf({}));
    supplier->Proxy()->offer_change(TypesOf({"B"}), TypesOf({}));
    const CosNotification::EventTypeSeq_var offered =
        consumer->Proxy()->obtain_offered_types(Admin::ALL_NOW_UPDATES_ON);
    EXPECT_THAT(NamesOf(offered.in()), UnorderedElementsAre("A", "B"));
    const CosNotification::EventTypeSeq_var none =
        consumer->Proxy()->obtain_offered_types(Admin::NONE_NOW_UPDATES_ON);
    EXPECT_EQ(none->length(), 0U);
    const CosNotification::EventTypeSeq_var wanted =
        supplier->Proxy()->obtain_subscription_types(Admin::ALL_NOW_UPDATES_OFF);
    EXPECT_THAT(NamesOf(wanted.in()), ElementsAre("*"));
}

TEST_F(EventTypes, UpdatesCanBeSwitchedOff) {
    const auto quiet = RecordingConsumer::Connect(channel.consumers.in());
    const auto told = RecordingConsumer::Connect(channel.consumers.in());
    const CosNotification::EventTypeSeq_var none =
        quiet->Proxy()->obtain_offered_types(Admin::NONE_NOW_UPDATES_OFF);
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    supplier->Proxy()->offer_change(TypesOf({"A"}), TypesOf({}));
    EXPECT_TRUE(WaitFor([&] { return told->OfferedTypes().size() == 1; }));
    // An announcement would come ahead of an event.
    supplier->Push(EventOf("A", 1));
    ASSERT_TRUE(quiet->WaitForCount(1));
    EXPECT_TRUE(quiet->OfferedTypes().empty());
}

}  // namespace
