#include "services/notify/properties/qos.h"

#include <gmock/gmock.h>

#include <map>

#include "tests/unit/notify_data/property_fixture.h"

namespace {

using namespace qv_notify_test;
using qv_notify::ApplyQos;
using qv_notify::Capabilities;
using qv_notify::DefaultQos;
using qv_notify::PropertyValues;
using qv_notify::QosLevel;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr Capabilities kStore{true};
constexpr Capabilities kNoStore{false};
constexpr TimeBase::TimeT kLongest = 18446744073709551615U;

/// What is wrong with the wishes; also that nothing changed then, and that validate says the same.
std::vector<std::string> ErrorsOf(QosLevel level, const std::vector<Wish>& wishes,
                                  const PropertyValues& settings = DefaultQos(),
                                  const Capabilities& capabilities = kStore) {
    std::vector<std::string> validated;
    try {
        const CosNotification::NamedPropertyRangeSeq_var ranges =
            qv_notify::ValidateQos(level, Wishes(wishes), capabilities, settings);
    } catch (const CosNotification::UnsupportedQoS& refused) {
        validated = ErrorTexts(refused.qos_err);
    }
    PropertyValues changed = settings;
    try {
        ApplyQos(level, Wishes(wishes), capabilities, changed);
    } catch (const CosNotification::UnsupportedQoS& refused) {
        EXPECT_EQ(settings, changed);
        EXPECT_EQ(validated, ErrorTexts(refused.qos_err));
        return ErrorTexts(refused.qos_err);
    }
    EXPECT_THAT(validated, IsEmpty());
    return {};
}

class Qos : public PropertyTest {};

struct Case {
    const char* name;
    std::vector<CORBA::Any> good;
    std::map<std::string, CORBA::Any> bad;  // the error without the name
    std::vector<QosLevel> levels;
};

const std::vector<QosLevel> kObjects = {QosLevel::kChannel, QosLevel::kAdmin, QosLevel::kProxy};
const std::vector<QosLevel> kEverywhere = {QosLevel::kChannel, QosLevel::kAdmin, QosLevel::kProxy,
                                           QosLevel::kEvent};

std::vector<Case> Cases() {
    return {
        {"EventReliability",
         {Short(0)},
         {{"BAD_TYPE no range", Long(0)}, {"BAD_VALUE short 0..short 1", Short(2)}},
         {QosLevel::kChannel, QosLevel::kEvent}},
        {"ConnectionReliability",
         {Short(0), Short(1)},
         {{"BAD_TYPE no range", Boolean(true)}, {"BAD_VALUE short 0..short 1", Short(-1)}},
         kObjects},
        {"Priority",
         {Short(-32767), Short(0), Short(32767)},
         {{"BAD_TYPE no range", Text("high")}, {"BAD_VALUE short -32767..short 32767", Short(-32768)}},
         kEverywhere},
        {"Timeout", {TimeT(0), TimeT(kLongest)}, {{"BAD_TYPE no range", Long(1)}}, kEverywhere},
        {"OrderPolicy",
         {Short(0), Short(1), Short(2), Short(3)},
         {{"BAD_TYPE no range", Long(1)}, {"BAD_VALUE short 0..short 3", Short(4)}},
         kObjects},
        {"DiscardPolicy",
         {Short(0), Short(1), Short(2), Short(3), Short(4)},
         {{"BAD_TYPE no range", TimeT(1)}, {"BAD_VALUE short 0..short 4", Short(5)}},
         kObjects},
        {"MaximumBatchSize",
         {Long(1)},
         {{"BAD_TYPE no range", Short(1)},
          {"BAD_VALUE long 1..long 1", Long(0)},
          {"UNSUPPORTED_VALUE long 1..long 1", Long(2)}},
         kObjects},
        {"PacingInterval", {TimeT(0), TimeT(kLongest)}, {{"BAD_TYPE no range", UtcT(1)}}, kObjects},
        {"StartTimeSupported",
         {Boolean(false)},
         {{"BAD_TYPE no range", Short(0)}, {"UNSUPPORTED_VALUE false..false", Boolean(true)}},
         kObjects},
        {"StopTimeSupported",
         {Boolean(false), Boolean(true)},
         {{"BAD_TYPE no range", CORBA::Any()}},
         kObjects},
        {"MaxEventsPerConsumer",
         {Long(0), Long(2147483647)},
         {{"BAD_TYPE no range", Short(5)}, {"BAD_VALUE long 0..long 2147483647", Long(-1)}},
         kObjects},
        {"StopTime", {UtcT(0), UtcT(kLongest)}, {{"BAD_TYPE no range", TimeT(1)}}, {QosLevel::kEvent}},
    };
}

TEST_F(Qos, EachPropertyTakesItsValuesAtItsLevels) {
    for (const Case& one : Cases()) {
        for (const QosLevel level : one.levels) {
            for (const CORBA::Any& value : one.good) {
                EXPECT_THAT(ErrorsOf(level, {{one.name, value}}), IsEmpty()) << one.name;
            }
        }
    }
}

TEST_F(Qos, EachPropertySaysWhatIsWrongWithAValue) {
    for (const Case& one : Cases()) {
        for (const QosLevel level : one.levels) {
            for (const auto& [error, value] : one.bad) {
                EXPECT_THAT(ErrorsOf(level, {{one.name, value}}),
                            ElementsAre(std::string(one.name) + " " + error));
            }
        }
    }
}

TEST_F(Qos, APropertyOfOtherLevelsIsUnavailableWhateverItsValue) {
    for (const Case& one : Cases()) {
        for (const QosLevel level : kEverywhere) {
            if (std::find(one.levels.begin(), one.levels.end(), level) == one.levels.end()) {
                const std::string expected = std::string(one.name) + " UNAVAILABLE_PROPERTY no range";
                EXPECT_THAT(ErrorsOf(level, {{one.name, one.good.front()}}), ElementsAre(expected));
                EXPECT_THAT(ErrorsOf(level, {{one.name, Text("?")}}), ElementsAre(expected));
            }
        }
    }
}

TEST_F(Qos, StartTimeIsOfEventsButUnsupported) {
    EXPECT_THAT(ErrorsOf(QosLevel::kEvent, {{"StartTime", UtcT(1)}}),
                ElementsAre("StartTime UNSUPPORTED_PROPERTY no range"));
    EXPECT_THAT(ErrorsOf(QosLevel::kProxy, {{"StartTime", UtcT(1)}}),
                ElementsAre("StartTime UNAVAILABLE_PROPERTY no range"));
}

TEST_F(Qos, NamesEveryPropertyThatIsWrongAndChangesNothing) {
    EXPECT_THAT(ErrorsOf(QosLevel::kChannel, {{"OrderPolicy", Short(1)},
                                              {"Colour", Short(1)},
                                              {"Priority", Long(1)},
                                              {"StopTime", UtcT(1)},
                                              {"OrderPolicy", Short(9)},
                                              {"", Short(1)}}),
                ElementsAre("Colour BAD_PROPERTY no range", "Priority BAD_TYPE no range",
                            "StopTime UNAVAILABLE_PROPERTY no range",
                            "OrderPolicy BAD_VALUE short 0..short 3", " BAD_PROPERTY no range"));
}

TEST_F(Qos, EventsAreKeptOnlyWhereConnectionsAre) {
    EXPECT_THAT(ErrorsOf(QosLevel::kChannel, {{"EventReliability", Short(1)}}),
                ElementsAre("EventReliability UNAVAILABLE_VALUE short 0..short 0"));
    PropertyValues settings = DefaultQos();
    ApplyQos(QosLevel::kChannel,
             Wishes({{"EventReliability", Short(1)}, {"ConnectionReliability", Short(1)}}), kStore, settings);
    EXPECT_EQ(qv_notify::ValueOf(settings, "EventReliability", std::int16_t{0}), 1);
    EXPECT_EQ(qv_notify::ValueOf(settings, "ConnectionReliability", std::int16_t{0}), 1);
    EXPECT_THAT(ErrorsOf(QosLevel::kChannel, {{"ConnectionReliability", Short(0)}}, settings),
                ElementsAre("ConnectionReliability UNAVAILABLE_VALUE short 1..short 1"));
    EXPECT_THAT(ErrorsOf(QosLevel::kEvent, {{"EventReliability", Short(1)}}, settings), IsEmpty());
    EXPECT_THAT(ErrorsOf(QosLevel::kProxy, {{"ConnectionReliability", Short(0)}}, {}), IsEmpty());
    EXPECT_THAT(ErrorsOf(QosLevel::kChannel,
                         {{"EventReliability", Short(0)}, {"ConnectionReliability", Short(0)}}, settings),
                IsEmpty());
}

TEST_F(Qos, WithoutAStoreNothingIsPersistent) {
    EXPECT_THAT(
        ErrorsOf(QosLevel::kChannel, {{"EventReliability", Short(1)}, {"ConnectionReliability", Short(1)}},
                 DefaultQos(), kNoStore),
        ElementsAre("EventReliability UNSUPPORTED_VALUE short 0..short 0",
                    "ConnectionReliability UNSUPPORTED_VALUE short 0..short 0"));
    EXPECT_THAT(ErrorsOf(QosLevel::kProxy, {{"ConnectionReliability", Short(7)}}, {}, kNoStore),
                ElementsAre("ConnectionReliability BAD_VALUE short 0..short 0"));
    EXPECT_THAT(ErrorsOf(QosLevel::kChannel, {{"EventReliability", Short(0)}}, DefaultQos(), kNoStore),
                IsEmpty());
}

TEST_F(Qos, TheLaterOfTwoCounts) {
    PropertyValues settings;
    ApplyQos(QosLevel::kProxy, Wishes({{"Priority", Short(1)}, {"Priority", Short(2)}}), kStore, settings);
    EXPECT_EQ(settings, (PropertyValues{{"Priority", std::int16_t{2}}}));
}

TEST_F(Qos, DefaultsAreThoseOfTheStandard) {
    EXPECT_EQ(DefaultQos(), (PropertyValues{{"EventReliability", std::int16_t{0}},
                                            {"ConnectionReliability", std::int16_t{0}},
                                            {"Priority", std::int16_t{0}},
                                            {"Timeout", std::uint64_t{0}},
                                            {"OrderPolicy", std::int16_t{2}},
                                            {"DiscardPolicy", std::int16_t{0}},
                                            {"MaximumBatchSize", std::int32_t{1}},
                                            {"PacingInterval", std::uint64_t{0}},
                                            {"StartTimeSupported", false},
                                            {"StopTimeSupported", true},
                                            {"MaxEventsPerConsumer", std::int32_t{0}}}));
}

TEST_F(Qos, ValidateReturnsTheRangesOfWhatElseCouldBeSet) {
    const auto ranges_of = [](QosLevel level, const std::vector<Wish>& wishes,
                              const Capabilities& capabilities) {
        std::vector<std::string> texts;
        CosNotification::NamedPropertyRangeSeq_var ranges =
            qv_notify::ValidateQos(level, Wishes(wishes), capabilities, DefaultQos());
        for (CORBA::ULong i = 0; i < ranges->length(); ++i) {
            texts.push_back(std::string(ranges[i].name.in()) + " " + RangeText(ranges[i].range));
        }
        return texts;
    };
    EXPECT_THAT(ranges_of(QosLevel::kEvent, {{"Priority", Short(1)}}, kStore),
                ElementsAre("EventReliability short 0..short 0", "StopTime no range",
                            "Timeout time 0..time 18446744073709551615"));
    EXPECT_THAT(
        ranges_of(QosLevel::kChannel,
                  {{"ConnectionReliability", Short(1)},
                   {"Priority", Short(1)},
                   {"Timeout", TimeT(1)},
                   {"OrderPolicy", Short(1)},
                   {"DiscardPolicy", Short(1)}},
                  kStore),
        ElementsAre("EventReliability short 0..short 1", "MaximumBatchSize long 1..long 1",
                    "PacingInterval time 0..time 18446744073709551615", "StartTimeSupported false..false",
                    "StopTimeSupported false..true", "MaxEventsPerConsumer long 0..long 2147483647"));
    EXPECT_EQ(ranges_of(QosLevel::kProxy, {}, kNoStore).front(), "ConnectionReliability short 0..short 0");
}

TEST_F(Qos, SequencesAreReadAsTheyWereWritten) {
    const PropertyValues all = DefaultQos();
    const CosNotification::QoSProperties_var sequence = qv_notify::ToSequence(all);
    EXPECT_EQ(sequence->length(), all.size());
    PropertyValues read;
    ApplyQos(QosLevel::kChannel, sequence.in(), kNoStore, read);
    EXPECT_EQ(read, all);
}

TEST_F(Qos, WhatIsInsideSetsOnlyItsOwn) {
    const PropertyValues channel = {{"Priority", std::int16_t{1}}, {"EventReliability", std::int16_t{1}}};
    const PropertyValues proxy = {{"Priority", std::int16_t{2}}, {"Timeout", std::uint64_t{3}}};
    const PropertyValues holding = qv_notify::Inherit(channel, proxy);
    EXPECT_EQ(holding, (PropertyValues{{"Priority", std::int16_t{2}},
                                       {"EventReliability", std::int16_t{1}},
                                       {"Timeout", std::uint64_t{3}}}));
    EXPECT_EQ(qv_notify::AvailableAt(QosLevel::kProxy, holding), proxy);
}

}  // namespace
