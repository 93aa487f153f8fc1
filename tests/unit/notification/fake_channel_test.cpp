// The fake notification service does what the tests that rely on it expect.
#include "tests/unit/notification/fake_channel.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/unit/logging/orb_environment.h"

namespace qv_test {
namespace {

using namespace CosNotifyChannelAdmin;

struct FakeChannel : ::testing::Test {
    FakeNotifyService service{(TestRootPoa(), TestOrb())};
    EventChannelFactory_var factory = service.Factory();
    ChannelID id = 0;
    EventChannel_var channel;
    SupplierAdmin_var admin;
    StructuredProxyPushConsumer_var proxy;

    void Connect() {
        CosNotification::QoSProperties qos(1);
        qos.length(1);
        qos[0].name = CORBA::string_dup("OrderPolicy");
        qos[0].value <<= CORBA::Short(1);
        channel = factory->create_channel(qos, {}, id);
        admin = channel->default_supplier_admin();
        ProxyID proxyId = 0;
        const ProxyConsumer_var any = admin->obtain_notification_push_consumer(STRUCTURED_EVENT, proxyId);
        proxy = StructuredProxyPushConsumer::_narrow(any.in());
        proxy->connect_structured_push_supplier(CosNotifyComm::StructuredPushSupplier::_nil());
    }
};

CosNotification::StructuredEvent Event(const char* name) {
    CosNotification::StructuredEvent event;
    event.header.fixed_header.event_name = CORBA::string_dup(name);
    return event;
}

TEST_F(FakeChannel, KeepsWhatItGets) {
    Connect();
    proxy->push_structured_event(Event("a"));
    proxy->push_structured_event(Event("b"));
    ASSERT_EQ(2u, service.Events().size());
    EXPECT_STREQ("a", service.Events()[0].header.fixed_header.event_name.in());
    EXPECT_STREQ("b", service.Events()[1].header.fixed_header.event_name.in());
    ASSERT_EQ(1u, service.Channels().size());
    EXPECT_STREQ("OrderPolicy", service.Channels()[0].qos[0].name.in());
    EXPECT_EQ((std::vector<std::string>{
                  "create_channel", "default_supplier_admin", "obtain_notification_push_consumer",
                  "connect_structured_push_supplier", "push_structured_event", "push_structured_event"}),
              service.script().Calls());
}

TEST_F(FakeChannel, RaisesWhatItIsTold) {
    Connect();
    service.script().On("push_structured_event", [](int call) {
        if (call == 2) {
            throw CORBA::TRANSIENT();
        }
    });
    proxy->push_structured_event(Event("a"));
    EXPECT_THROW(proxy->push_structured_event(Event("b")), CORBA::TRANSIENT);
    proxy->push_structured_event(Event("c"));
    EXPECT_EQ(2u, service.Events().size());
    EXPECT_EQ(3, service.script().Count("push_structured_event"));
    EXPECT_THROW(proxy->connect_structured_push_supplier(CosNotifyComm::StructuredPushSupplier::_nil()),
                 CosEventChannelAdmin::AlreadyConnected);
    EXPECT_THROW(channel->get_all_consumeradmins(), CORBA::NO_IMPLEMENT);
}

TEST_F(FakeChannel, ReturnsNilWhereTold) {
    Connect();
    for (const char* operation : {"create_channel", "get_event_channel", "default_supplier_admin",
                                  "obtain_notification_push_consumer"}) {
        service.script().ReturnNil(operation);
    }
    ProxyID proxyId = 0;
    EXPECT_TRUE(CORBA::is_nil(EventChannel_var(factory->create_channel({}, {}, id)).in()));
    EXPECT_TRUE(CORBA::is_nil(EventChannel_var(factory->get_event_channel(1)).in()));
    EXPECT_TRUE(CORBA::is_nil(SupplierAdmin_var(channel->default_supplier_admin()).in()));
    EXPECT_TRUE(CORBA::is_nil(
        ProxyConsumer_var(admin->obtain_notification_push_consumer(STRUCTURED_EVENT, proxyId)).in()));
}

TEST_F(FakeChannel, HoldsACallUntilItIsReleased) {
    Connect();
    service.script().Block("push_structured_event");
    std::thread pusher([&] { proxy->push_structured_event(Event("a")); });
    EXPECT_TRUE(service.script().WaitForCalls("push_structured_event", 1));
    EXPECT_TRUE(service.Events().empty());
    service.script().Release("push_structured_event");
    pusher.join();
    EXPECT_EQ(1u, service.Events().size());
}

TEST_F(FakeChannel, DestroyedAndVanishedChannelsAreGone) {
    Connect();
    const EventChannel_var other = service.AddChannel();
    channel->destroy();
    EXPECT_THROW(channel->default_supplier_admin(), CORBA::OBJECT_NOT_EXIST);
    EXPECT_THROW(proxy->push_structured_event(Event("a")), CORBA::OBJECT_NOT_EXIST);
    EXPECT_EQ(1u, ChannelIDSeq_var(factory->get_all_channels())->length());
    service.Vanish(2);
    EXPECT_THROW(other->destroy(), CORBA::OBJECT_NOT_EXIST);
    EXPECT_THROW(factory->get_event_channel(2), ChannelNotFound);
    EXPECT_FALSE(service.Channels()[1].alive);
}

}  // namespace
}  // namespace qv_test
