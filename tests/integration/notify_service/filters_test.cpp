// Filter objects and how admins and proxies use them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/integration/notify_service/channel_run.h"

namespace {

using namespace qv_test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

CosNotifyFilter::ConstraintExpSeq Constraints(const std::vector<const char*>& texts) {
    CosNotifyFilter::ConstraintExpSeq sequence;
    sequence.length(static_cast<CORBA::ULong>(texts.size()));
    CORBA::ULong next = 0;
    for (const char* text : texts) {
        sequence[next++].constraint_expr = CORBA::string_dup(text);
    }
    return sequence;
}

CosNotifyFilter::ConstraintIDSeq Ids(const std::vector<CORBA::Long>& ids) {
    CosNotifyFilter::ConstraintIDSeq sequence;
    sequence.length(static_cast<CORBA::ULong>(ids.size()));
    std::copy(ids.begin(), ids.end(), sequence.get_buffer());
    return sequence;
}

class FilterCallback : public POA_CosNotifyComm::NotifySubscribe {
  public:
    void subscription_change(const CosNotification::EventTypeSeq& added,
                             const CosNotification::EventTypeSeq& removed) override {
        const std::lock_guard<std::mutex> guard(m_mutex);
        for (CORBA::ULong i = 0; i < added.length(); ++i) {
            m_told.push_back("+" + std::string(added[i].type_name.in()));
        }
        for (CORBA::ULong i = 0; i < removed.length(); ++i) {
            m_told.push_back("-" + std::string(removed[i].type_name.in()));
        }
    }
    std::vector<std::string> Told() const {
        const std::lock_guard<std::mutex> guard(m_mutex);
        return m_told;
    }

  private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_told;
};

class Filters : public testing::Test {
  protected:
    CosNotifyFilter::Filter_var Make(const std::vector<const char*>& texts) {
        const CosNotifyFilter::FilterFactory_var factory = channel->default_filter_factory();
        CosNotifyFilter::Filter_var filter = factory->create_filter("EXTENDED_TCL");
        if (!texts.empty()) {
            infos = filter->add_constraints(Constraints(texts));
        }
        return filter;
    }
    /// Which of the numbers from 1 to 9 the consumer gets.
    std::vector<std::int32_t> Passing(const RecordingConsumer& consumer) {
        const std::size_t before = consumer.Count();
        const auto all = RecordingConsumer::Connect(channel.consumers.in());
        PushFromTo(*supplier, 1, 9);
        EXPECT_TRUE(all->WaitForCount(9));
        // What follows in the same queue shows that nothing else is on its way.
        consumer.Proxy()->suspend_connection();
        consumer.Proxy()->resume_connection();
        EXPECT_TRUE(WaitFor([&] { return Settled(consumer); }));
        all->Proxy()->disconnect_structured_push_supplier();
        const std::vector<std::int32_t> numbers = consumer.Numbers();
        return {numbers.begin() + static_cast<std::ptrdiff_t>(before), numbers.end()};
    }
    static bool Settled(const RecordingConsumer& consumer) {
        const std::size_t count = consumer.Count();
        return !WaitFor([&] { return consumer.Count() != count; }, std::chrono::milliseconds(100));
    }

    NotifyServiceRun service;
    Channel channel{service};
    PortableServer::Servant_var<RecordingSupplier> supplier =
        RecordingSupplier::Connect(channel.suppliers.in());
    PortableServer::Servant_var<RecordingConsumer> consumer =
        RecordingConsumer::Connect(channel.consumers.in());
    CosNotifyFilter::ConstraintInfoSeq_var infos;
};

TEST_F(Filters, AreMadeForKnownGrammars) {
    const CosNotifyFilter::FilterFactory_var factory = channel->default_filter_factory();
    for (const char* grammar : {"EXTENDED_TCL", "ETCL", "TCL"}) {
        const CosNotifyFilter::Filter_var filter = factory->create_filter(grammar);
        const CORBA::String_var named = filter->constraint_grammar();
        EXPECT_STREQ(named.in(), grammar);
    }
    EXPECT_THROW(factory->create_filter("SQL"), CosNotifyFilter::InvalidGrammar);
}

TEST_F(Filters, ConstraintsAreAddedModifiedAndRemoved) {
    const auto filter = Make({"$number == 1", "$number == 2"});
    consumer->Proxy()->add_filter(filter.in());
    EXPECT_THAT(Passing(*consumer), ElementsAre(1, 2));

    CosNotifyFilter::ConstraintInfoSeq changed;
    changed.length(1);
    changed[0] = infos.in()[1];
    changed[0].constraint_expression.constraint_expr = CORBA::string_dup("$number == 5");
    filter->modify_constraints(Ids({infos.in()[0].constraint_id}), changed);
    EXPECT_THAT(Passing(*consumer), ElementsAre(5));
    const CosNotifyFilter::ConstraintInfoSeq_var left = filter->get_all_constraints();
    ASSERT_EQ(left->length(), 1U);
    EXPECT_EQ(left.in()[0].constraint_id, infos.in()[1].constraint_id) << "it keeps its id";

    filter->remove_all_constraints();
    EXPECT_THAT(Passing(*consumer), IsEmpty()) << "nothing passes a filter without constraints";
}

TEST_F(Filters, WhatIsWrongChangesNothing) {
    const auto filter = Make({"$number == 1"});
    const CORBA::Long id = infos.in()[0].constraint_id;
    try {
        filter->add_constraints(Constraints({"$number == 2", "$number =="}));
        FAIL();
    } catch (const CosNotifyFilter::InvalidConstraint& invalid) {
        EXPECT_STREQ(invalid.constr.constraint_expr.in(), "$number ==");
    }
    CosNotifyFilter::ConstraintInfoSeq changed;
    changed.length(1);
    changed[0].constraint_id = id;
    changed[0].constraint_expression.constraint_expr = CORBA::string_dup("$number == 9");
    EXPECT_THROW(filter->modify_constraints(Ids({id + 50}), changed), CosNotifyFilter::ConstraintNotFound);
    EXPECT_THROW(CosNotifyFilter::ConstraintInfoSeq_var(filter->get_constraints(Ids({id + 50}))),
                 CosNotifyFilter::ConstraintNotFound);
    const CosNotifyFilter::ConstraintInfoSeq_var all = filter->get_all_constraints();
    ASSERT_EQ(all->length(), 1U);
    EXPECT_STREQ(all.in()[0].constraint_expression.constraint_expr.in(), "$number == 1");
}

TEST_F(Filters, TakeSoManyConstraintsAndNoMore) {
    const auto filter = Make({"$number == 1"});
    CosNotifyFilter::ConstraintInfoSeq_var added =
        filter->add_constraints(Constraints(std::vector<const char*>(9999, "$number == 2")));
    EXPECT_EQ(added->length(), 9999U);
    EXPECT_THROW(filter->add_constraints(Constraints({"$number == 3"})), CORBA::IMP_LIMIT);
    const CosNotifyFilter::ConstraintInfoSeq_var all = filter->get_all_constraints();
    EXPECT_EQ(all->length(), 10000U);
    filter->remove_all_constraints();
    added = filter->add_constraints(Constraints({"$number == 3"}));
    EXPECT_EQ(added->length(), 1U);
}

TEST_F(Filters, AreUsedInSuchNumbersAndNoMore) {
    const auto filter = Make({"$number == 1"});
    for (int i = 0; i < 1000; ++i) {
        consumer->Proxy()->add_filter(filter.in());
    }
    EXPECT_THROW(consumer->Proxy()->add_filter(filter.in()), CORBA::IMP_LIMIT);
    const CosNotifyFilter::FilterIDSeq_var ids = consumer->Proxy()->get_all_filters();
    EXPECT_EQ(ids->length(), 1000U);
    consumer->Proxy()->remove_filter(ids.in()[0]);
    consumer->Proxy()->add_filter(filter.in());
}

TEST_F(Filters, MatchEventsForWhoeverAsks) {
    const auto filter = Make({"$number == 1"});
    EXPECT_TRUE(filter->match_structured(EventOf("NT_ALARM", 1)));
    EXPECT_FALSE(filter->match_structured(EventOf("NT_ALARM", 2)));
}

TEST_F(Filters, AreFoundAndRemovedByIds) {
    const auto one = Make({"$number == 1"});
    const auto two = Make({"$number == 2"});
    const CosNotifyFilter::FilterID first = consumer->Proxy()->add_filter(one.in());
    const CosNotifyFilter::FilterID second = consumer->Proxy()->add_filter(two.in());
    EXPECT_THAT(Passing(*consumer), ElementsAre(1, 2));
    const CosNotifyFilter::Filter_var found = consumer->Proxy()->get_filter(second);
    EXPECT_TRUE(found->_is_equivalent(two.in()));
    consumer->Proxy()->remove_filter(first);
    EXPECT_THROW(consumer->Proxy()->remove_filter(first), CosNotifyFilter::FilterNotFound);
    EXPECT_THROW(CosNotifyFilter::Filter_var(consumer->Proxy()->get_filter(first)),
                 CosNotifyFilter::FilterNotFound);
    EXPECT_THAT(Passing(*consumer), ElementsAre(2));
    consumer->Proxy()->remove_all_filters();
    EXPECT_EQ(Passing(*consumer), NumbersFromTo(1, 9));
    EXPECT_THROW(consumer->Proxy()->add_filter(CosNotifyFilter::Filter::_nil()), CORBA::BAD_PARAM);
}

TEST_F(Filters, ADestroyedOneCountsNoMore) {
    const auto filter = Make({"$number == 1"});
    consumer->Proxy()->add_filter(filter.in());
    filter->destroy();
    EXPECT_EQ(Passing(*consumer), NumbersFromTo(1, 9));
    const CosNotifyFilter::FilterIDSeq_var ids = consumer->Proxy()->get_all_filters();
    EXPECT_EQ(ids->length(), 0U);
    EXPECT_THROW(filter->destroy(), CORBA::OBJECT_NOT_EXIST);
}

TEST_F(Filters, OfAdminAndProxyAreCombinedByTheOperator) {
    CORBA::Long id = 0;
    const auto both = CosNotifyChannelAdmin::ConsumerAdmin_var(
        channel->new_for_consumers(CosNotifyChannelAdmin::AND_OP, id));
    const auto either = CosNotifyChannelAdmin::ConsumerAdmin_var(
        channel->new_for_consumers(CosNotifyChannelAdmin::OR_OP, id));
    const auto strict = RecordingConsumer::Connect(both.in());
    const auto lax = RecordingConsumer::Connect(either.in());
    for (const auto& admin : {both, either}) {
        AddFilter(channel.channel.in(), admin.in(), "$number < 5");
    }
    for (const auto& one : {strict, lax}) {
        AddFilter(channel.channel.in(), one->Proxy(), "$number > 3");
    }
    EXPECT_THAT(Passing(*strict), ElementsAre(4));
    EXPECT_TRUE(lax->WaitForCount(9));
}

TEST_F(Filters, OfSuppliersHoldForWhatTheyPush) {
    AddFilter(channel.channel.in(), supplier->Proxy(), "$number > 3");
    AddFilter(channel.channel.in(), channel.suppliers.in(), "$number < 5");
    for (std::int32_t number = 1; number <= 9; ++number) {
        supplier->Push(EventOf("NT_ALARM", number));
    }
    ASSERT_TRUE(consumer->WaitForCount(1));
    EXPECT_TRUE(Settled(*consumer));
    EXPECT_THAT(consumer->Numbers(), ElementsAre(4));
}

TEST_F(Filters, CallbacksAreToldOfOtherTypes) {
    ClientOrb();
    const PortableServer::Servant_var<FilterCallback> callback(new FilterCallback);
    const CosNotifyComm::NotifySubscribe_var reference = callback->_this();
    const auto filter = Make({});
    const CosNotifyFilter::CallbackID id = filter->attach_callback(reference.in());
    CosNotifyFilter::ConstraintExpSeq constraints = Constraints({"TRUE"});
    constraints[0].event_types = TypesOf({"A", "B"});
    infos = filter->add_constraints(constraints);
    EXPECT_TRUE(WaitFor([&] { return callback->Told().size() == 2; }));
    EXPECT_THAT(callback->Told(), UnorderedElementsAre("+A", "+B"));
    filter->remove_all_constraints();
    EXPECT_TRUE(WaitFor([&] { return callback->Told().size() == 4; }));
    const CosNotifyFilter::CallbackIDSeq_var ids = filter->get_callbacks();
    ASSERT_EQ(ids->length(), 1U);
    EXPECT_EQ(ids.in()[0], id);
    filter->detach_callback(id);
    EXPECT_THROW(filter->detach_callback(id), CosNotifyFilter::CallbackNotFound);
    EXPECT_THROW(filter->attach_callback(CosNotifyComm::NotifySubscribe::_nil()), CORBA::BAD_PARAM);
}

}  // namespace
