// Channels, admins and proxies from their making to their end.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/integration/notify_service/channel_run.h"

namespace {

using namespace qv_test;
namespace Admin = CosNotifyChannelAdmin;

class Lifecycle : public testing::Test {
  protected:
    NotifyServiceRun service;
    Admin::EventChannelFactory_var factory = FactoryAt(service.Corbaloc());
    Channel channel{service};
};

TEST_F(Lifecycle, AChannelIsFoundByItsId) {
    const CosNotification::QoSProperties none;
    CORBA::Long id = 0;
    const Admin::EventChannel_var made = factory->create_channel(none, none, id);
    const Admin::EventChannel_var found = factory->get_event_channel(id);
    EXPECT_TRUE(found->_is_equivalent(made.in()));
    const Admin::EventChannelFactory_var origin = made->MyFactory();
    EXPECT_TRUE(origin->_is_equivalent(factory.in()));
    EXPECT_THROW(factory->get_event_channel(id + 1), Admin::ChannelNotFound);
}

TEST_F(Lifecycle, AdminsAreFoundByTheirIds) {
    CORBA::Long id = 0;
    const Admin::ConsumerAdmin_var made = channel->new_for_consumers(Admin::OR_OP, id);
    const Admin::ConsumerAdmin_var found = channel->get_consumeradmin(id);
    EXPECT_TRUE(found->_is_equivalent(made.in()));
    EXPECT_EQ(made->MyOperator(), Admin::OR_OP);
    const Admin::EventChannel_var owner = made->MyChannel();
    EXPECT_TRUE(owner->_is_equivalent(channel.channel.in()));
    const Admin::AdminIDSeq_var ids = channel->get_all_consumeradmins();
    ASSERT_EQ(ids->length(), 2U);
    EXPECT_EQ(ids.in()[0], 0) << "the default admin";
    EXPECT_EQ(ids.in()[1], id);
    EXPECT_THROW(channel->get_consumeradmin(id + 1), Admin::AdminNotFound);
    EXPECT_THROW(channel->get_supplieradmin(id), Admin::AdminNotFound);
    const Admin::AdminIDSeq_var suppliers = channel->get_all_supplieradmins();
    EXPECT_EQ(suppliers->length(), 1U);
}

TEST_F(Lifecycle, ProxiesAreFoundByTheirIds) {
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    const Admin::ProxySupplier_var found = channel.consumers->get_proxy_supplier(consumer->Id());
    EXPECT_TRUE(found->_is_equivalent(consumer->Proxy()));
    EXPECT_EQ(found->MyType(), Admin::PUSH_STRUCTURED);
    const Admin::ConsumerAdmin_var admin = found->MyAdmin();
    EXPECT_TRUE(admin->_is_equivalent(channel.consumers.in()));
    const Admin::ProxyIDSeq_var ids = channel.suppliers->push_consumers();
    ASSERT_EQ(ids->length(), 1U);
    EXPECT_EQ(ids.in()[0], supplier->Id());
    EXPECT_THROW(channel.consumers->get_proxy_supplier(supplier->Id()), Admin::ProxyNotFound);
    EXPECT_THROW(channel.suppliers->get_proxy_consumer(12345), Admin::ProxyNotFound);
}

TEST_F(Lifecycle, AProxyTakesOneClient) {
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    const CosNotifyComm::StructuredPushConsumer_var again = consumer->_this();
    EXPECT_THROW(consumer->Proxy()->connect_structured_push_consumer(again.in()),
                 CosEventChannelAdmin::AlreadyConnected);
    EXPECT_THROW(
        supplier->Proxy()->connect_structured_push_supplier(CosNotifyComm::StructuredPushSupplier::_nil()),
        CosEventChannelAdmin::AlreadyConnected);
}

TEST_F(Lifecycle, AConsumerNeedsAReferenceASupplierDoesNot) {
    CORBA::Long id = 0;
    const auto supplying = Admin::ProxySupplier_var(
        channel.consumers->obtain_notification_push_supplier(Admin::STRUCTURED_EVENT, id));
    const auto proxy =
        Admin::StructuredProxyPushSupplier_var(Admin::StructuredProxyPushSupplier::_narrow(supplying.in()));
    EXPECT_THROW(proxy->connect_structured_push_consumer(CosNotifyComm::StructuredPushConsumer::_nil()),
                 CORBA::BAD_PARAM);
    EXPECT_THROW(proxy->suspend_connection(), Admin::NotConnected);
    EXPECT_THROW(proxy->resume_connection(), Admin::NotConnected);

    const auto consuming = Admin::ProxyConsumer_var(
        channel.suppliers->obtain_notification_push_consumer(Admin::STRUCTURED_EVENT, id));
    const auto entry =
        Admin::StructuredProxyPushConsumer_var(Admin::StructuredProxyPushConsumer::_narrow(consuming.in()));
    EXPECT_THROW(entry->push_structured_event(EventOf("A", 1)), CosEventComm::Disconnected);
    entry->connect_structured_push_supplier(CosNotifyComm::StructuredPushSupplier::_nil());
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    entry->push_structured_event(EventOf("A", 1));
    EXPECT_TRUE(consumer->WaitForCount(1));
    channel->destroy();  // nobody to be told
    EXPECT_TRUE(WaitFor([&] { return consumer->Disconnected(); }));
}

TEST_F(Lifecycle, SuspensionIsAState) {
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    EXPECT_THROW(consumer->Proxy()->resume_connection(), Admin::ConnectionAlreadyActive);
    consumer->Proxy()->suspend_connection();
    EXPECT_THROW(consumer->Proxy()->suspend_connection(), Admin::ConnectionAlreadyInactive);
    PushFromTo(*supplier, 1, 5);
    EXPECT_TRUE(WaitForSaid(service, "is suspended")) << service.Said();
    EXPECT_EQ(consumer->Count(), 0U);
    consumer->Proxy()->resume_connection();
    ASSERT_TRUE(consumer->WaitForCount(5));
    EXPECT_EQ(consumer->Numbers(), NumbersFromTo(1, 5));
}

TEST_F(Lifecycle, WhoDisconnectsIsNotTold) {
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const auto other = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    consumer->Proxy()->disconnect_structured_push_supplier();
    PushFromTo(*supplier, 1, 1);
    ASSERT_TRUE(other->WaitForCount(1));
    EXPECT_EQ(consumer->Count(), 0U);
    EXPECT_FALSE(consumer->Disconnected());
    EXPECT_THROW(consumer->Proxy()->MyType(), CORBA::OBJECT_NOT_EXIST);
    supplier->Proxy()->disconnect_structured_push_consumer();
    EXPECT_THROW(supplier->Push(EventOf("A", 1)), CORBA::OBJECT_NOT_EXIST);
    EXPECT_FALSE(supplier->Disconnected());
    const Admin::ProxyIDSeq_var ids = channel.consumers->push_suppliers();
    EXPECT_EQ(ids->length(), 1U);
}

TEST_F(Lifecycle, AnAdminEndsWithItsProxies) {
    CORBA::Long id = 0;
    const Admin::ConsumerAdmin_var admin = channel->new_for_consumers(Admin::AND_OP, id);
    const auto consumer = RecordingConsumer::Connect(admin.in());
    const auto other = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    admin->destroy();
    EXPECT_TRUE(WaitFor([&] { return consumer->Disconnected(); }));
    EXPECT_THROW(admin->MyID(), CORBA::OBJECT_NOT_EXIST);
    EXPECT_THROW(channel->get_consumeradmin(id), Admin::AdminNotFound);
    PushFromTo(*supplier, 1, 2);
    ASSERT_TRUE(other->WaitForCount(2));
    EXPECT_EQ(consumer->Count(), 0U);
}

TEST_F(Lifecycle, ADefaultAdminLivesAsLongAsItsChannel) {
    EXPECT_THROW(channel.consumers->destroy(), CORBA::NO_PERMISSION);
    EXPECT_THROW(channel.suppliers->destroy(), CORBA::NO_PERMISSION);
    EXPECT_EQ(channel.consumers->MyID(), 0);
}

TEST_F(Lifecycle, AChannelEndsWithAllThatIsBelowIt) {
    for (const bool persistent : {false, true}) {
        const Channel ended(service, persistent);
        const auto consumer = RecordingConsumer::Connect(ended.consumers.in());
        const auto supplier = RecordingSupplier::Connect(ended.suppliers.in());
        const auto filter = AddFilter(ended.channel.in(), consumer->Proxy(), "$number > 5");
        ended->destroy();
        EXPECT_TRUE(WaitFor([&] { return consumer->Disconnected() && supplier->Disconnected(); }));
        EXPECT_THROW(ended->default_consumer_admin(), CORBA::OBJECT_NOT_EXIST);
        EXPECT_THROW(ended.consumers->MyID(), CORBA::OBJECT_NOT_EXIST);
        EXPECT_THROW(consumer->Proxy()->MyType(), CORBA::OBJECT_NOT_EXIST);
        EXPECT_THROW(supplier->Push(EventOf("A", 1)), CORBA::OBJECT_NOT_EXIST);
        EXPECT_THROW(filter->remove_all_constraints(), CORBA::OBJECT_NOT_EXIST);
        const Admin::ChannelIDSeq_var channels = factory->get_all_channels();
        EXPECT_EQ(channels->length(), 1U);
    }
}

TEST_F(Lifecycle, AChannelWithAHangingConsumerEndsAtOnce) {
    const Hang hang;
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in(), hang.Hook());
    const auto other = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    PushFromTo(*supplier, 1, 10);
    ASSERT_TRUE(other->WaitForCount(10));
    const auto start = std::chrono::steady_clock::now();
    channel->destroy();
    EXPECT_TRUE(WaitFor([&] { return other->Disconnected() && supplier->Disconnected(); }));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(8));
}

}  // namespace
