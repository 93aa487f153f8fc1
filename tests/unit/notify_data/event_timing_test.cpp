#include "services/notify/properties/event_timing.h"

#include "services/notify/properties/queue_policy.h"
#include "tests/unit/notify_data/property_fixture.h"

namespace {

using namespace qv_notify_test;
using qv_notify::EventTiming;
using qv_notify::PropertyValues;
using qv_notify::Time;
using std::chrono::seconds;

constexpr std::uint64_t kSecond = 10'000'000;               // in TimeT
constexpr std::uint64_t kFirstOf1970 = 122192928000000000;  // in UtcT

const Time kNow = Time(seconds(1'700'000'000));

std::uint64_t Utc(Time time) {
    return kFirstOf1970 +
           static_cast<std::uint64_t>(
               std::chrono::duration_cast<std::chrono::microseconds>(time.time_since_epoch()).count()) *
               10;
}

EventTiming Read(const std::vector<Wish>& header, const PropertyValues& inherited = {}) {
    CosNotification::StructuredEvent event;
    event.header.variable_header = Wishes(header);
    return qv_notify::ReadEventTiming(event, inherited, kNow);
}

class EventTimingTest : public PropertyTest {};

TEST_F(EventTimingTest, WithoutAnythingAnEventStays) {
    const EventTiming timing = Read({});
    EXPECT_EQ(timing.priority, 0);
    EXPECT_FALSE(timing.expires);
    EXPECT_FALSE(timing.persistent_wanted);
}

TEST_F(EventTimingTest, TheHeaderGoesBeforeWhatIsInherited) {
    const PropertyValues inherited = {{"Priority", std::int16_t{7}},
                                      {"Timeout", std::uint64_t{60 * kSecond}},
                                      {"EventReliability", std::int16_t{1}}};
    EXPECT_EQ(Read({}, inherited).priority, 7);
    EXPECT_EQ(Read({}, inherited).expires, kNow + seconds(60));
    EXPECT_TRUE(Read({}, inherited).persistent_wanted);
    const EventTiming own =
        Read({{"Priority", Short(-3)}, {"Timeout", TimeT(5 * kSecond)}, {"EventReliability", Short(0)}},
             inherited);
    EXPECT_EQ(own.priority, -3);
    EXPECT_EQ(own.expires, kNow + seconds(5));
    EXPECT_FALSE(own.persistent_wanted);
}

TEST_F(EventTimingTest, NoughtIsNoTimeout) {
    EXPECT_FALSE(Read({{"Timeout", TimeT(0)}}, {{"Timeout", kSecond}}).expires);
}

TEST_F(EventTimingTest, WhatTheClockNeverShowsIsNoTimeout) {
    EXPECT_FALSE(Read({{"Timeout", TimeT(18446744073709551615U)}}).expires);
    EXPECT_FALSE(Read({{"Timeout", TimeT(92233720368547758U)}}).expires);
    EXPECT_FALSE(Read({{"StopTime", UtcT(18446744073709551615U)}}).expires);
}

TEST_F(EventTimingTest, StopTimeIsAMoment) {
    EXPECT_EQ(Read({{"StopTime", UtcT(Utc(kNow + seconds(3)))}}).expires, kNow + seconds(3));
    EXPECT_EQ(Read({{"StopTime", UtcT(Utc(kNow - seconds(3)))}}).expires, kNow - seconds(3));
    EXPECT_EQ(Read({{"StopTime", UtcT(1)}}).expires, Time());
}

TEST_F(EventTimingTest, TheEarlierOfTheTwoCounts) {
    const Wish stop = {"StopTime", UtcT(Utc(kNow + seconds(3)))};
    EXPECT_EQ(Read({stop, {"Timeout", TimeT(2 * kSecond)}}).expires, kNow + seconds(2));
    EXPECT_EQ(Read({{"Timeout", TimeT(4 * kSecond)}, stop}).expires, kNow + seconds(3));
    EXPECT_EQ(Read({{"Timeout", TimeT(0)}, stop}).expires, kNow + seconds(3));
}

TEST_F(EventTimingTest, StopTimeCanBeSwitchedOff) {
    EXPECT_FALSE(Read({{"StopTime", UtcT(Utc(kNow))}}, {{"StopTimeSupported", false}}).expires);
}

TEST_F(EventTimingTest, WhatIsNotSoundIsLeftToTheConsumers) {
    const EventTiming timing = Read({{"Priority", Long(5)},
                                     {"Priority", Short(-32768)},
                                     {"Timeout", UtcT(5)},
                                     {"StopTime", TimeT(5)},
                                     {"EventReliability", Short(2)},
                                     {"StartTime", UtcT(5)},
                                     {"Colour", Text("red")},
                                     {"OrderPolicy", Short(1)}});
    EXPECT_EQ(timing.priority, 0);
    EXPECT_FALSE(timing.expires);
    EXPECT_FALSE(timing.persistent_wanted);
}

TEST(QueuePolicyOf, TakesItsPartsFromWhatHolds) {
    using qv_notify::QueuePolicyOf;
    EXPECT_EQ(QueuePolicyOf({}, 10),
              (qv_notify::QueuePolicy{qv_notify::Order::kPriority, qv_notify::Discard::kAny, 10}));
    EXPECT_EQ(QueuePolicyOf({{"OrderPolicy", std::int16_t{3}},
                             {"DiscardPolicy", std::int16_t{4}},
                             {"MaxEventsPerConsumer", std::int32_t{5}}},
                            10),
              (qv_notify::QueuePolicy{qv_notify::Order::kDeadline, qv_notify::Discard::kLifo, 5}));
}

}  // namespace
