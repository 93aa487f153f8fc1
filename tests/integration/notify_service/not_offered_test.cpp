// The forms of the standard that the service does not have.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/integration/notify_service/channel_run.h"

namespace {

using namespace qv_test;
namespace Admin = CosNotifyChannelAdmin;

class NotOffered : public testing::Test {
  protected:
    /// The call raises NO_IMPLEMENT, and the operator is told once.
    template <class Call>
    void Expect(Call&& call, const std::string& told) {
        EXPECT_THROW(call(), CORBA::NO_IMPLEMENT) << told;
        EXPECT_TRUE(WaitForSaid(service, told + ", which this service does not offer")) << service.Said();
        EXPECT_EQ(TimesSaid(service, "asked for " + told), 1U);
    }
    NotifyServiceRun service;
    Channel channel{service};
    CORBA::Long id = 0;
};

TEST_F(NotOffered, AnyAndSequenceEvents) {
    Expect([&] { channel.consumers->obtain_notification_push_supplier(Admin::ANY_EVENT, id); },
           "a proxy for events of type any");
    Expect([&] { channel.suppliers->obtain_notification_push_consumer(Admin::SEQUENCE_EVENT, id); },
           "a proxy for sequences of events");
}

TEST_F(NotOffered, Pulling) {
    Expect([&] { channel.consumers->obtain_notification_pull_supplier(Admin::STRUCTURED_EVENT, id); },
           "obtain_notification_pull_supplier");
    Expect([&] { channel.suppliers->obtain_notification_pull_consumer(Admin::STRUCTURED_EVENT, id); },
           "obtain_notification_pull_consumer");
    const Admin::ProxyIDSeq_var suppliers = channel.consumers->pull_suppliers();
    EXPECT_EQ(suppliers->length(), 0U);
    const Admin::ProxyIDSeq_var consumers = channel.suppliers->pull_consumers();
    EXPECT_EQ(consumers->length(), 0U);
}

TEST_F(NotOffered, TheEventServiceBelow) {
    Expect([&] { channel.consumers->obtain_push_supplier(); }, "obtain_push_supplier");
    Expect([&] { channel.consumers->obtain_pull_supplier(); }, "obtain_pull_supplier");
    Expect([&] { channel.suppliers->obtain_push_consumer(); }, "obtain_push_consumer");
    Expect([&] { channel.suppliers->obtain_pull_consumer(); }, "obtain_pull_consumer");
}

TEST_F(NotOffered, MappingFilters) {
    const CosNotifyFilter::FilterFactory_var factory = channel->default_filter_factory();
    CORBA::Any value;
    value <<= CORBA::Long{1};
    Expect([&] { factory->create_mapping_filter("EXTENDED_TCL", value); }, "create_mapping_filter");
    const auto nil = CosNotifyFilter::MappingFilter::_nil();
    Expect([&] { channel.consumers->priority_filter(nil); }, "a mapping filter (priority_filter)");
    Expect([&] { channel.consumers->lifetime_filter(nil); }, "a mapping filter (lifetime_filter)");
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    EXPECT_THROW(consumer->Proxy()->priority_filter(nil), CORBA::NO_IMPLEMENT);
    EXPECT_THROW(consumer->Proxy()->lifetime_filter(nil), CORBA::NO_IMPLEMENT);
    const CosNotifyFilter::MappingFilter_var none = consumer->Proxy()->priority_filter();
    EXPECT_TRUE(CORBA::is_nil(none.in()));
}

TEST_F(NotOffered, FiltersOfAnotherService) {
    const NotifyServiceRun other;
    const Channel elsewhere(other);
    const CosNotifyFilter::FilterFactory_var factory = elsewhere->default_filter_factory();
    const CosNotifyFilter::Filter_var filter = factory->create_filter("EXTENDED_TCL");
    Expect([&] { channel.consumers->add_filter(filter.in()); },
           "add_filter with a filter of another service");
}

TEST_F(NotOffered, FiltersThatDoNotOutliveWhatUsesThem) {
    const Channel kept(service, true);
    const CosNotifyFilter::FilterFactory_var brief_factory = channel->default_filter_factory();
    const CosNotifyFilter::Filter_var brief = brief_factory->create_filter("EXTENDED_TCL");
    Expect([&] { kept.consumers->add_filter(brief.in()); },
           "add_filter with a filter of a channel that is not kept");
    const CosNotifyFilter::FilterFactory_var kept_factory = kept->default_filter_factory();
    const CosNotifyFilter::Filter_var lasting = kept_factory->create_filter("EXTENDED_TCL");
    EXPECT_NO_THROW(channel.consumers->add_filter(lasting.in()));
}

TEST_F(NotOffered, IsToldAFewTimesOnly) {
    for (int i = 0; i < 50; ++i) {
        EXPECT_THROW(channel.consumers->obtain_push_supplier(), CORBA::NO_IMPLEMENT);
    }
    ASSERT_TRUE(WaitForSaid(service, "obtain_push_supplier"));
    EXPECT_LE(TimesSaid(service, "asked for obtain_push_supplier"), 5U);
}

}  // namespace
