// The decisions of the switch of the fault campaign, without a network.
#include <gmock/gmock.h>

#include <cmath>

#include "tests/faults/switch/fabric.h"
#include "tests/faults/switch/tunnel.h"

namespace qv_faults {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr int kPackets = 20000;

std::vector<std::vector<Delay>> DecideAll(Link& link, int packets = kPackets) {
    std::vector<std::vector<Delay>> fates;
    for (int i = 0; i < packets; ++i) {
        fates.push_back(link.Decide());
    }
    return fates;
}

void ExpectShare(std::uint64_t count, double share) {
    EXPECT_NEAR(static_cast<double>(count) / kPackets, share, 0.02);
}

TEST(FaultSwitchLink, PassesEverythingOnceAndAtOnceWithoutRules) {
    Link link(1, "a>b");
    for (const auto& fate : DecideAll(link)) {
        ASSERT_EQ(fate, std::vector<Delay>{Delay(0)});
    }
    EXPECT_EQ(link.counts().seen, std::uint64_t{kPackets});
    EXPECT_EQ(link.counts().passed, std::uint64_t{kPackets});
    EXPECT_EQ(link.counts().delayed, 0U);
}

TEST(FaultSwitchLink, DropsAboutTheShare) {
    Link link(1, "a>b");
    LinkRules rules;
    rules.drop = 0.3;
    link.SetRules(rules);
    DecideAll(link);
    ExpectShare(link.counts().dropped, 0.3);
    EXPECT_EQ(link.counts().passed + link.counts().dropped, std::uint64_t{kPackets});
}

TEST(FaultSwitchLink, DuplicatesAboutTheShare) {
    Link link(1, "a>b");
    LinkRules rules;
    rules.duplicate = 0.2;
    link.SetRules(rules);
    std::uint64_t copies = 0;
    for (const auto& fate : DecideAll(link)) {
        copies += fate.size();
    }
    ExpectShare(link.counts().duplicated, 0.2);
    EXPECT_EQ(copies, kPackets + link.counts().duplicated);
    EXPECT_EQ(copies, link.counts().passed);
}

TEST(FaultSwitchLink, DelaysByTheTimeAndUpToTheJitter) {
    Link link(1, "a>b");
    LinkRules rules;
    rules.delay = Delay(50);
    rules.jitter = Delay(10);
    link.SetRules(rules);
    Delay shortest(1000);
    Delay longest(0);
    for (const auto& fate : DecideAll(link)) {
        shortest = std::min(shortest, fate[0]);
        longest = std::max(longest, fate[0]);
    }
    EXPECT_EQ(shortest, Delay(50));
    EXPECT_EQ(longest, Delay(60));
}

TEST(FaultSwitchLink, HoldsSomePacketsBackToReorderThem) {
    Link link(1, "a>b");
    LinkRules rules;
    rules.reorder = 0.25;
    rules.reorder_by = Delay(20);
    link.SetRules(rules);
    std::uint64_t held = 0;
    for (const auto& fate : DecideAll(link)) {
        held += fate[0] == Delay(20) ? 1 : 0;
    }
    EXPECT_EQ(held, link.counts().reordered);
    ExpectShare(held, 0.25);
}

TEST(FaultSwitchLink, LosesEverythingWhileItIsCut) {
    Link link(1, "a>b");
    LinkRules rules;
    rules.cut = true;
    link.SetRules(rules);
    EXPECT_TRUE(link.Decide().empty());
    EXPECT_EQ(link.counts().cut, 1U);
    link.SetRules({});
    EXPECT_EQ(link.Decide().size(), 1U);
}

TEST(FaultSwitchLink, DecidesAlikeForTheSameSeedAndOtherwiseForAnother) {
    LinkRules rules;
    rules.drop = 0.1;
    rules.duplicate = 0.1;
    rules.reorder = 0.1;
    rules.reorder_by = Delay(7);
    rules.jitter = Delay(30);
    const auto fates = [&](std::uint64_t seed, const char* name) {
        Link link(seed, name);
        link.SetRules(rules);
        return DecideAll(link, 500);
    };
    EXPECT_EQ(fates(7, "a>b"), fates(7, "a>b"));
    EXPECT_NE(fates(7, "a>b"), fates(8, "a>b"));
    EXPECT_NE(fates(7, "a>b"), fates(7, "b>a"));
}

// Rules come and go at times that no seed decides on; the luck of later packets must not depend on them.
TEST(FaultSwitchLink, KeepsTheLuckOfLaterPacketsWhateverTheRulesWere) {
    LinkRules cut;
    cut.cut = true;
    LinkRules drop;
    drop.drop = 0.5;
    Link one(3, "a>b");
    Link other(3, "a>b");
    one.SetRules(cut);
    DecideAll(one, 100);
    DecideAll(other, 100);
    one.SetRules(drop);
    other.SetRules(drop);
    EXPECT_EQ(DecideAll(one, 200), DecideAll(other, 200));
}

class FaultSwitchFabric : public testing::Test {
  protected:
    Fabric fabric{1, {"agent", "services", "oss"}};
};

TEST_F(FaultSwitchFabric, ChangesBothDirectionsOfOneLinkAlone) {
    EXPECT_EQ(fabric.Order("cut agent oss"), "ok");
    EXPECT_TRUE(fabric.Find("agent", "oss")->rules().cut);
    EXPECT_TRUE(fabric.Find("oss", "agent")->rules().cut);
    EXPECT_FALSE(fabric.Find("oss", "services")->rules().cut);
}

TEST_F(FaultSwitchFabric, AddsRulesUntilItIsHealed) {
    EXPECT_EQ(fabric.Order("drop agent oss 0.25"), "ok");
    EXPECT_EQ(fabric.Order("duplicate agent oss 0.5"), "ok");
    EXPECT_EQ(fabric.Order("delay agent oss 40 5"), "ok");
    EXPECT_EQ(fabric.Order("reorder agent oss 0.1 30"), "ok");
    const LinkRules& rules = fabric.Find("oss", "agent")->rules();
    EXPECT_DOUBLE_EQ(rules.drop, 0.25);
    EXPECT_DOUBLE_EQ(rules.duplicate, 0.5);
    EXPECT_DOUBLE_EQ(rules.reorder, 0.1);
    EXPECT_EQ(rules.reorder_by, Delay(30));
    EXPECT_EQ(rules.delay, Delay(40));
    EXPECT_EQ(rules.jitter, Delay(5));
    EXPECT_EQ(fabric.Order("heal"), "ok");
    EXPECT_DOUBLE_EQ(rules.drop, 0);
    EXPECT_EQ(rules.delay, Delay(0));
}

TEST_F(FaultSwitchFabric, RefusesWhatItDoesNotUnderstand) {
    for (const char* const order :
         {"", "cut agent", "cut agent mars", "cut agent agent", "drop agent oss 1.5", "drop agent oss",
          "delay agent oss 10", "delay agent oss -1 0", "reorder agent oss x 3", "burn agent oss"}) {
        EXPECT_THAT(fabric.Order(order), StartsWith("error ")) << order;
    }
    EXPECT_DOUBLE_EQ(fabric.Find("agent", "oss")->rules().drop, 0);
}

TEST_F(FaultSwitchFabric, Counts) {
    fabric.Find("agent", "oss")->Decide();
    EXPECT_THAT(fabric.Order("counts"), HasSubstr("agent oss seen 1 passed 1 cut 0 dropped 0 duplicated 0"));
}

TEST(FaultSwitchPacket, KnowsWhereAnIpv4PacketGoes) {
    std::string packet(40, '\0');
    packet[0] = 0x45;
    packet.replace(16, 4, "\x0a\x4d\x01\x02");
    EXPECT_EQ(DestinationOf(packet), "10.77.1.2");
    packet[0] = 0x60;
    EXPECT_EQ(DestinationOf(packet), "");
    EXPECT_EQ(DestinationOf("short"), "");
}

}  // namespace
}  // namespace qv_faults
