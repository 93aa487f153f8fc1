#include <malloc.h>

#include <memory>
#include <string>
#include <vector>

#include "orb/event_octets.h"
#include "services/notify/queue/event.h"
#include "tests/support/sanitized.h"
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

CosNotification::StructuredEvent Alarm() {
    CosNotification::StructuredEvent event;
    event.header.fixed_header.event_type.domain_name = CORBA::string_dup("tmf_mtnm");
    event.header.fixed_header.event_type.type_name = CORBA::string_dup("NT_ALARM");
    CORBA::Any severity;
    severity <<= CORBA::Long{2};
    event.filterable_data = Wishes({{"notificationId", Text("11140941021")},
                                    {"objectName", Text("Zorvex/KLV/NE-00042/rack=1/shelf=2/slot=7")},
                                    {"nativeEMSName", Text("NE-00042 slot 7")},
                                    {"emsTime", Text("20261114094102.0Z")},
                                    {"neTime", Text("20261114094101.0Z")},
                                    {"perceivedSeverity", severity},
                                    {"layerRate", severity},
                                    {"probableCause", Text("LOS")}});
    event.remainder_of_body <<= "";
    return event;
}

std::size_t HeapInUse() {
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

// The limit on a channel's memory is kept by this estimate.
TEST_F(EventMemory, IsAboutWhatAnEventFromAConnectionTakes) {
    if (qv_test::kSanitized) {
        GTEST_SKIP() << "sanitizers have a heap of their own";
    }
    constexpr std::size_t kEvents = 2000;
    const std::string octets = qv_orb::EventToOctets(Alarm());
    const std::size_t before = HeapInUse();
    std::vector<std::unique_ptr<qv_notify::Event>> events;
    std::size_t estimate = 0;
    for (std::size_t i = 0; i < kEvents; ++i) {
        events.push_back(std::make_unique<qv_notify::Event>());
        qv_orb::EventFromOctets(octets, events.back()->body);
        estimate += qv_notify::MemoryOf(events.back()->body);
    }
    const double share = static_cast<double>(estimate) / static_cast<double>(HeapInUse() - before);
    EXPECT_GT(share, 0.85);
    EXPECT_LT(share, 1.2);
}

}  // namespace
