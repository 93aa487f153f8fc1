// Quality of service and admin properties, as clients set them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/integration/notify_service/channel_run.h"

namespace {

using namespace qv_test;
namespace Admin = CosNotifyChannelAdmin;
using testing::ElementsAre;

class NotifyProperties : public testing::Test {
  protected:
    Admin::EventChannel_var Create(const CosNotification::QoSProperties& qos,
                                   const CosNotification::AdminProperties& admin = {}) {
        CORBA::Long id = 0;
        return factory->create_channel(qos, admin, id);
    }
    static CosNotification::StructuredEvent WithHeader(std::int32_t number,
                                                       const CosNotification::Property& field) {
        CosNotification::StructuredEvent event = EventOf("NT_ALARM", number);
        event.header.variable_header = Properties({field});
        return event;
    }
    NotifyServiceRun service;
    Admin::EventChannelFactory_var factory = FactoryAt(service.Corbaloc());
};

/// Code, name and range of the only error of the exception.
template <class Exception>
void ExpectError(const Exception& exception, const char* name, CosNotification::QoSError_code code) {
    ASSERT_EQ(exception.Errors().length(), 1U);
    EXPECT_STREQ(exception.Errors()[0].name.in(), name);
    EXPECT_EQ(exception.Errors()[0].code, code);
}

struct QosErrors {
    CosNotification::PropertyErrorSeq errors;
    const CosNotification::PropertyErrorSeq& Errors() const { return errors; }
};

template <class Call>
QosErrors ErrorsOf(Call&& call) {
    try {
        call();
    } catch (const CosNotification::UnsupportedQoS& exception) {
        return {exception.qos_err};
    } catch (const CosNotification::UnsupportedAdmin& exception) {
        return {exception.admin_err};
    }
    ADD_FAILURE() << "no exception";
    return {};
}

TEST_F(NotifyProperties, ErrorsNameThePropertyAndItsRange) {
    const QosErrors unknown = ErrorsOf([&] { Create(Properties({PropertyOf("Nonsense", CORBA::Long{1})})); });
    ExpectError(unknown, "Nonsense", CosNotification::BAD_PROPERTY);
    const QosErrors type = ErrorsOf([&] { Create(Properties({PropertyOf("OrderPolicy", CORBA::Long{1})})); });
    ExpectError(type, "OrderPolicy", CosNotification::BAD_TYPE);
    const QosErrors value =
        ErrorsOf([&] { Create(Properties({PropertyOf("OrderPolicy", CORBA::Short{9})})); });
    ExpectError(value, "OrderPolicy", CosNotification::BAD_VALUE);
    CORBA::Short low = -1;
    CORBA::Short high = -1;
    ASSERT_TRUE(value.errors[0].available_range.low_val >>= low);
    ASSERT_TRUE(value.errors[0].available_range.high_val >>= high);
    EXPECT_EQ(low, 0);
    EXPECT_EQ(high, 3);
    const QosErrors admin =
        ErrorsOf([&] { Create({}, Properties({PropertyOf("MaxConsumers", CORBA::Long{-1})})); });
    ExpectError(admin, "MaxConsumers", CosNotification::BAD_VALUE);
    const Admin::ChannelIDSeq_var channels = factory->get_all_channels();
    EXPECT_EQ(channels->length(), 0U) << "a channel that could not be made is none";
}

TEST_F(NotifyProperties, EventsCannotBeKeptWhereTheChannelIsNot) {
    const QosErrors errors =
        ErrorsOf([&] { Create(Properties({PropertyOf("EventReliability", CORBA::Short{1})})); });
    ASSERT_EQ(errors.errors.length(), 1U);
    EXPECT_STREQ(errors.errors[0].name.in(), "EventReliability");
}

TEST_F(NotifyProperties, AnErrorChangesNothing) {
    const Channel channel(service);
    const QosErrors errors = ErrorsOf([&] {
        channel->set_qos(Properties(
            {PropertyOf("MaxEventsPerConsumer", CORBA::Long{7}), PropertyOf("X", CORBA::Long{7})}));
    });
    ExpectError(errors, "X", CosNotification::BAD_PROPERTY);
    const CosNotification::QoSProperties_var qos = channel->get_qos();
    for (CORBA::ULong i = 0; i < qos->length(); ++i) {
        CORBA::Long value = -1;
        if (std::string(qos.in()[i].name.in()) == "MaxEventsPerConsumer" && (qos.in()[i].value >>= value)) {
            EXPECT_EQ(value, 0);
        }
    }
}

TEST_F(NotifyProperties, CanBeTriedWithoutBeingSet) {
    const Channel channel(service);
    CosNotification::NamedPropertyRangeSeq_var available;
    channel->validate_qos(Properties({PropertyOf("OrderPolicy", CORBA::Short{2})}), available.out());
    EXPECT_GT(available->length(), 0U);
    const QosErrors errors = ErrorsOf([&] {
        CosNotification::NamedPropertyRangeSeq_var none;
        channel->validate_qos(Properties({PropertyOf("OrderPolicy", CORBA::Short{12})}), none.out());
    });
    ExpectError(errors, "OrderPolicy", CosNotification::BAD_VALUE);
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    EXPECT_NO_THROW(supplier->Proxy()->validate_event_qos(
        Properties({PropertyOf("Priority", CORBA::Short{1})}), available.out()));
}

TEST_F(NotifyProperties, AFullChannelRejectsEventsWithImpLimit) {
    const Channel channel(service);
    channel->set_admin(Properties({PropertyOf("MaxQueueLength", CORBA::Long{5})}));
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    consumer->Proxy()->suspend_connection();
    PushFromTo(*supplier, 1, 5);
    EXPECT_THROW(supplier->Push(EventOf("NT_ALARM", 6)), CORBA::IMP_LIMIT);
    EXPECT_TRUE(WaitForSaid(service, "rejects new events with IMP_LIMIT"));
    consumer->Proxy()->resume_connection();
    ASSERT_TRUE(consumer->WaitForCount(5));
    supplier->PushUntilTaken(EventOf("NT_ALARM", 7));
    ASSERT_TRUE(consumer->WaitForCount(6));
    EXPECT_THAT(consumer->Numbers(), ElementsAre(1, 2, 3, 4, 5, 7));
}

TEST_F(NotifyProperties, AnEventThatWaitsForManyCountsOnce) {
    const Channel channel(service);
    channel->set_admin(Properties({PropertyOf("MaxQueueLength", CORBA::Long{5})}));
    std::vector<PortableServer::Servant_var<RecordingConsumer>> consumers;
    for (int i = 0; i < 10; ++i) {
        consumers.push_back(RecordingConsumer::Connect(channel.consumers.in()));
        consumers.back()->Proxy()->suspend_connection();
    }
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    PushFromTo(*supplier, 1, 5);
    EXPECT_THROW(supplier->Push(EventOf("NT_ALARM", 6)), CORBA::IMP_LIMIT);
}

TEST_F(NotifyProperties, AConsumersQueueIsLimitedByItself) {
    const Channel channel(service);
    const auto limited = RecordingConsumer::Connect(channel.consumers.in());
    const auto other = RecordingConsumer::Connect(channel.consumers.in());
    for (const auto& consumer : {limited, other}) {
        consumer->Proxy()->suspend_connection();
    }
    limited->Proxy()->set_qos(Properties(
        {PropertyOf("MaxEventsPerConsumer", CORBA::Long{2}), PropertyOf("DiscardPolicy", CORBA::Short{4})}));
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    PushFromTo(*supplier, 1, 5);
    ASSERT_TRUE(WaitForSaid(service, "3 were dropped so far")) << service.Said();
    for (const auto& consumer : {limited, other}) {
        consumer->Proxy()->resume_connection();
    }
    ASSERT_TRUE(limited->WaitForCount(2));
    ASSERT_TRUE(other->WaitForCount(5));
    EXPECT_THAT(limited->Numbers(), ElementsAre(1, 2)) << "the last ones go first";
}

TEST_F(NotifyProperties, TheHeaderOfAnEventSetsItsPriority) {
    const Channel channel(service);
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    consumer->Proxy()->set_qos(Properties({PropertyOf("OrderPolicy", CORBA::Short{2})}));
    consumer->Proxy()->suspend_connection();
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    supplier->Push(EventOf("NT_ALARM", 1));
    supplier->Push(WithHeader(2, PropertyOf("Priority", CORBA::Short{5})));
    supplier->Push(WithHeader(3, PropertyOf("Priority", CORBA::Short{-5})));
    supplier->Push(WithHeader(4, PropertyOf("Priority", CORBA::Short{5})));
    consumer->Proxy()->resume_connection();
    ASSERT_TRUE(consumer->WaitForCount(4));
    EXPECT_THAT(consumer->Numbers(), ElementsAre(2, 4, 1, 3));
}

TEST_F(NotifyProperties, TheHeaderOfAnEventSetsItsTimeout) {
    const Channel channel(service);
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    consumer->Proxy()->suspend_connection();
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    supplier->Push(WithHeader(1, PropertyOf("Timeout", CORBA::ULongLong{1})));
    supplier->Push(WithHeader(2, PropertyOf("Timeout", CORBA::ULongLong{36000000000})));
    consumer->Proxy()->resume_connection();
    ASSERT_TRUE(consumer->WaitForCount(1));
    EXPECT_THAT(consumer->Numbers(), ElementsAre(2));
    EXPECT_TRUE(WaitForSaid(service, "older than their time-out")) << service.Said();
}

TEST_F(NotifyProperties, ASupplierProxySetsThemForItsEvents) {
    const Channel channel(service);
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    consumer->Proxy()->set_qos(Properties({PropertyOf("OrderPolicy", CORBA::Short{2})}));
    consumer->Proxy()->suspend_connection();
    const auto plain = RecordingSupplier::Connect(channel.suppliers.in());
    const auto urgent = RecordingSupplier::Connect(channel.suppliers.in());
    urgent->Proxy()->set_qos(Properties({PropertyOf("Priority", CORBA::Short{9})}));
    plain->Push(EventOf("NT_ALARM", 1));
    urgent->Push(EventOf("NT_ALARM", 2));
    consumer->Proxy()->resume_connection();
    ASSERT_TRUE(consumer->WaitForCount(2));
    EXPECT_THAT(consumer->Numbers(), ElementsAre(2, 1));
}

TEST_F(NotifyProperties, EventsAreCollectedWithinThePacingInterval) {
    const Channel channel(service);
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    consumer->Proxy()->set_qos(Properties({PropertyOf("PacingInterval", CORBA::ULongLong{5000000})}));
    const auto start = std::chrono::steady_clock::now();
    supplier->Push(EventOf("NT_ALARM", 1));
    ASSERT_TRUE(consumer->WaitForCount(1));
    supplier->Push(EventOf("NT_ALARM", 2));
    ASSERT_TRUE(consumer->WaitForCount(2));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
}

TEST_F(NotifyProperties, AChannelTakesSoManyClients) {
    const Channel channel(service);
    channel->set_admin(
        Properties({PropertyOf("MaxConsumers", CORBA::Long{1}), PropertyOf("MaxSuppliers", CORBA::Long{1})}));
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    try {
        RecordingConsumer::Connect(channel.consumers.in());
        FAIL();
    } catch (const Admin::AdminLimitExceeded& exceeded) {
        EXPECT_STREQ(exceeded.admin_property_err.name.in(), "MaxConsumers");
    }
    EXPECT_THROW(RecordingSupplier::Connect(channel.suppliers.in()), Admin::AdminLimitExceeded);
    consumer->Proxy()->disconnect_structured_push_supplier();
    EXPECT_NO_THROW(RecordingConsumer::Connect(channel.consumers.in()));
}

}  // namespace
