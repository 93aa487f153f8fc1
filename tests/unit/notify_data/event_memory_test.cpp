#include <string>

#include "services/notify/queue/event.h"
#include "tests/unit/notify_data/property_fixture.h"

namespace {

using namespace qv_notify_test;

class EventMemory : public PropertyTest {};

TEST_F(EventMemory, GrowsWithWhatTheEventHolds) {
    CosNotification::StructuredEvent event;
    const std::size_t empty = qv_notify::MemoryOf(event);
    EXPECT_GE(empty, sizeof(CosNotification::StructuredEvent));
    EXPECT_LE(empty, 2000U);
    const std::string text(10000, 'x');
    event.header.fixed_header.event_name = text.c_str();
    EXPECT_NEAR(static_cast<double>(qv_notify::MemoryOf(event)), static_cast<double>(empty + 10000), 100);
    event.remainder_of_body <<= text.c_str();
    event.filterable_data = Wishes({{text, Text(text.c_str())}});
    EXPECT_NEAR(static_cast<double>(qv_notify::MemoryOf(event)), static_cast<double>(empty + 40000), 1000);
}

}  // namespace
