#include "orb/event_octets.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <orbsvcs/CosNotifyChannelAdminC.h>

namespace {

class EventOctetsTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        int argc = 0;
        s_orb = CORBA::ORB_init(argc, nullptr);
    }
    static void TearDownTestSuite() {
        s_orb->destroy();
        s_orb = CORBA::ORB::_nil();
    }

    static CORBA::ORB_var s_orb;
};

CORBA::ORB_var EventOctetsTest::s_orb;

CosNotification::StructuredEvent Sample() {
    CosNotification::StructuredEvent event;
    event.header.fixed_header.event_type.domain_name = "telecom";
    event.header.fixed_header.event_type.type_name = "alarm";
    event.header.fixed_header.event_name = "e-1";
    event.filterable_data.length(2);
    event.filterable_data[0].name = "kind";
    event.filterable_data[0].value <<= CosNotifyChannelAdmin::PULL_ANY;
    event.filterable_data[1].name = "range";
    CosNotification::NamedPropertyRange range;
    range.name = "x";
    range.range.low_val <<= CORBA::Any::from_octet(1);
    range.range.high_val <<= 2.5;
    event.filterable_data[1].value <<= range;
    event.remainder_of_body <<= CosNotifyChannelAdmin::AND_OP;
    return event;
}

/// Leaves `pattern` in the memory that the next allocations, and calls, get.
void Soil(int pattern) {
    std::vector<std::unique_ptr<char[]>> blocks;
    for (std::size_t size = 16; size <= 16384; size += 16) {
        blocks.push_back(std::make_unique<char[]>(size));
        std::memset(blocks.back().get(), pattern, size);
    }
    volatile char stack[16384];
    for (volatile char& byte : stack) {
        byte = static_cast<char>(pattern);
    }
}

TEST_F(EventOctetsTest, AnEventComesBackAsItWas) {
    CosNotification::StructuredEvent back;
    qv_orb::EventFromOctets(qv_orb::EventToOctets(Sample()), back);

    EXPECT_STREQ(back.header.fixed_header.event_name, "e-1");
    CosNotifyChannelAdmin::ProxyType kind{};
    ASSERT_TRUE(back.filterable_data[0].value >>= kind);
    EXPECT_EQ(kind, CosNotifyChannelAdmin::PULL_ANY);
    CosNotifyChannelAdmin::InterFilterGroupOperator rest{};
    ASSERT_TRUE(back.remainder_of_body >>= rest);
    EXPECT_EQ(rest, CosNotifyChannelAdmin::AND_OP);
}

// Who pushes an event again is recognised by its octets.
TEST_F(EventOctetsTest, DependOnTheEventAlone) {
    CosNotification::StructuredEvent received;
    qv_orb::EventFromOctets(qv_orb::EventToOctets(Sample()), received);
    std::string former;
    for (const int pattern : {0x00, 0xa5, 0x5a}) {
        for (const CosNotification::StructuredEvent& event : {Sample(), received}) {
            Soil(pattern);
            const std::string octets = qv_orb::EventToOctets(event);
            EXPECT_TRUE(former.empty() || octets == former) << "with " << pattern << " in memory before";
            former = octets;
        }
    }
}

TEST_F(EventOctetsTest, OctetsOfNothingAreRefused) {
    CosNotification::StructuredEvent event;
    EXPECT_THROW(qv_orb::EventFromOctets("", event), CORBA::MARSHAL);
}

}  // namespace
