#include "demo/agent/core/event_plan.h"

#include <gtest/gtest.h>

#include <set>

namespace qv_demo {
namespace {

Inventory TenElements() {
    std::vector<Element> elements(10);
    for (std::size_t i = 0; i < elements.size(); ++i) {
        elements[i].name = "NE-" + std::to_string(i);
    }
    return Inventory({}, std::move(elements));
}

TEST(EventPlan, TheSameNumberGivesTheSameEvent) {
    const Inventory inventory = TenElements();
    const PlannedEvent one = PlanEvent(3, inventory);
    const PlannedEvent again = PlanEvent(3, inventory);
    EXPECT_EQ(one.number, 3U);
    EXPECT_EQ(one.element, again.element);
    EXPECT_EQ(one.text, again.text);
    EXPECT_EQ(one.severity, again.severity);
}

TEST(EventPlan, EachFifthEventIsAChangeAndTheOthersAlarms) {
    const Inventory inventory = TenElements();
    std::set<EventSeverity> severities;
    for (std::uint32_t number = 1; number <= 20; ++number) {
        const PlannedEvent event = PlanEvent(number, inventory);
        const bool change = number % 5 == 0;
        EXPECT_EQ(event.kind, change ? EventKind::kAttributeChange : EventKind::kAlarm);
        EXPECT_EQ(event.severity == EventSeverity::kNone, change);
        EXPECT_EQ(event.attribute.empty(), !change);
        EXPECT_FALSE(event.text.empty());
        severities.insert(event.severity);
    }
    EXPECT_EQ(severities.size(), 6U) << "five of alarms, and none of changes";
}

TEST(EventPlan, EventsAreOfAllElements) {
    const Inventory inventory = TenElements();
    std::set<std::string> elements;
    for (std::uint32_t number = 1; number <= 10; ++number) {
        elements.insert(PlanEvent(number, inventory).element);
    }
    EXPECT_EQ(elements.size(), 10U);
}

TEST(EventPlan, WithoutElementsTheEmsItselfIsMeant) {
    EXPECT_EQ(PlanEvent(1, Inventory({}, {})).element, "");
}

TEST(EventPlan, AHeartbeatIsOfTheEms) {
    const PlannedEvent event = PlanHeartbeat(7);
    EXPECT_EQ(event.number, 7U);
    EXPECT_EQ(event.kind, EventKind::kHeartbeat);
    EXPECT_EQ(event.element, "");
    EXPECT_STREQ(SeverityName(event.severity), "");
    EXPECT_STREQ(TypeName(event.kind), "NT_HEARTBEAT");
}

}  // namespace
}  // namespace qv_demo
