#include "request/aclmgr.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>

#include "tests/unit/request/acl_probe.h"
#include "tests/unit/request/slow_platform.h"

namespace {

using NS_UTIL::IPAcl;
using NS_UTIL::IPACL_OSS;
using NS_UTIL::IPAclProbe;
using qv_test::g_platform;

constexpr unsigned int kLoopback = 0x7F000001;
constexpr unsigned int kFirst = 0x0A000001;   // 10.0.0.1
constexpr unsigned int kSecond = 0x0A000002;  // 10.0.0.2
constexpr long kPeriod = 30;

class IPAclTest : public ::testing::Test {
  protected:
    IPAclTest() { g_platform.Reset(); }
    ~IPAclTest() override { g_platform.Reset(); }

    void Init(long period = kPeriod) { acl.Init("", period, IPACL_OSS); }

    qv_test::AclClock clock;
    IPAcl acl;
};

TEST_F(IPAclTest, AnEmptyListAllowsEveryone) {
    Init();
    EXPECT_TRUE(acl.IsValidIP(kFirst));
    EXPECT_TRUE(acl.IsValidIP(0));
    EXPECT_TRUE(acl.IsValidIP(0xFFFFFFFF));
}

TEST_F(IPAclTest, AListAllowsItsAddressesAndTheLoopbackAddress) {
    g_platform.addresses = {"10.0.0.1", "192.168.255.254"};
    Init();
    EXPECT_TRUE(acl.IsValidIP(kFirst));
    EXPECT_TRUE(acl.IsValidIP(0xC0A8FFFE));
    EXPECT_TRUE(acl.IsValidIP(kLoopback));
    EXPECT_FALSE(acl.IsValidIP(kSecond));
    EXPECT_FALSE(acl.IsValidIP(0x0100000A)) << "the other byte order";
    EXPECT_FALSE(acl.IsValidIP(0x7F000002));
    EXPECT_FALSE(acl.IsValidIP(0));
}

TEST_F(IPAclTest, TheLoopbackAddressIsInHostByteOrder) {
    EXPECT_EQ(IPAclProbe::Loopback(acl), kLoopback);
}

TEST_F(IPAclTest, TheFirstCheckReadsTheListAndThePeriodHoldsTheNext) {
    g_platform.addresses = {"10.0.0.1"};
    Init();
    EXPECT_EQ(g_platform.lists, 0);
    EXPECT_TRUE(acl.IsValidIP(kFirst));
    for (int i = 0; i < 100; ++i) {
        acl.IsValidIP(kSecond);
    }
    EXPECT_EQ(g_platform.lists, 1);
}

TEST_F(IPAclTest, AChangeTakesEffectOnceThirtyOneSecondsHavePassed) {
    g_platform.addresses = {"10.0.0.1", "10.0.0.2"};
    Init();
    EXPECT_TRUE(acl.IsValidIP(kFirst));
    g_platform.addresses = {"10.0.0.2"};
    clock.Advance(30, 999999);
    EXPECT_TRUE(acl.IsValidIP(kFirst));
    clock.Advance(0, 1);
    EXPECT_FALSE(acl.IsValidIP(kFirst));
    EXPECT_TRUE(acl.IsValidIP(kSecond));
    EXPECT_EQ(g_platform.lists, 2);
}

TEST_F(IPAclTest, OnlyWholeSecondsSinceTheRefreshCount) {
    clock.Set(1700000000, 900000);
    Init();
    acl.UpdateOssIp();
    clock.Set(1700000031, 800000);  // 30.9 seconds later, though the seconds differ by 31
    acl.UpdateOssIp();
    EXPECT_EQ(g_platform.lists, 1);
    clock.Set(1700000031, 900000);
    acl.UpdateOssIp();
    EXPECT_EQ(g_platform.lists, 2);
}

TEST_F(IPAclTest, ThePeriodStartsAtTheLastRefreshAndNotAtTheLastCheck) {
    Init();
    acl.UpdateOssIp();
    for (int i = 0; i < 31; ++i) {
        clock.Advance(1);
        acl.UpdateOssIp();
    }
    EXPECT_EQ(g_platform.lists, 2);
}

TEST_F(IPAclTest, AListThatBecomesEmptyOpensTheDoorAtTheNextRefresh) {
    g_platform.addresses = {"10.0.0.1"};
    Init();
    EXPECT_FALSE(acl.IsValidIP(kSecond));
    g_platform.addresses.clear();
    EXPECT_FALSE(acl.IsValidIP(kSecond));
    clock.Advance(31);
    EXPECT_TRUE(acl.IsValidIP(kSecond));
}

TEST_F(IPAclTest, AnyOtherTypeAllowsEveryone) {
    g_platform.addresses = {"10.0.0.1"};
    acl.Init("", kPeriod, static_cast<NS_UTIL::IPACLType>(1));
    clock.Advance(100);
    EXPECT_TRUE(acl.IsValidIP(kSecond));
    EXPECT_EQ(g_platform.lists, 0);
}

TEST_F(IPAclTest, AnotherTypeIsRefreshedOnDemandAlone) {
    g_platform.addresses = {"10.0.0.1"};
    acl.Init("", kPeriod, static_cast<NS_UTIL::IPACLType>(7));
    acl.UpdateOssIp();
    EXPECT_TRUE(acl.IsValidIP(kFirst));
    EXPECT_FALSE(acl.IsValidIP(kSecond));
}

TEST_F(IPAclTest, BeforeInitThePeriodIsZero) {
    acl.IsValidIP(kFirst);
    acl.IsValidIP(kFirst);
    EXPECT_EQ(g_platform.lists, 1);
    clock.Advance(0, 999999);
    acl.IsValidIP(kFirst);
    EXPECT_EQ(g_platform.lists, 1);
    clock.Advance(0, 1);
    acl.IsValidIP(kFirst);
    EXPECT_EQ(g_platform.lists, 2);
}

TEST_F(IPAclTest, InitEmptiesTheListButLeavesTheTimeOfTheLastRefresh) {
    g_platform.addresses = {"10.0.0.1"};
    Init();
    EXPECT_FALSE(acl.IsValidIP(kSecond));
    Init();
    EXPECT_TRUE(acl.IsValidIP(kSecond)) << "empty until the next refresh";
    EXPECT_EQ(g_platform.lists, 1);
    clock.Advance(31);
    EXPECT_FALSE(acl.IsValidIP(kSecond));
}

TEST_F(IPAclTest, DoublesFoldTogether) {
    g_platform.addresses = {"10.0.0.1", "10.0.0.1", "10.0.0.2", "10.1"};
    Init();
    acl.UpdateOssIp();
    EXPECT_EQ(IPAclProbe::Size(acl), 2u);
}

TEST_F(IPAclTest, AHostNameIsResolvedOncePerRefresh) {
    g_platform.addresses = {"oss.test"};
    Init();
    EXPECT_TRUE(acl.IsValidIP(0x0A010203));
    EXPECT_FALSE(acl.IsValidIP(kFirst));
    EXPECT_EQ(g_platform.resolutions, 1);
    clock.Advance(31);
    EXPECT_TRUE(acl.IsValidIP(0x0A010203));
    EXPECT_EQ(g_platform.resolutions, 2);
}

TEST_F(IPAclTest, AHostWithAddressesOfBothKindsCountsByItsIPv4Address) {
    g_platform.addresses = {"both.test"};
    Init();
    EXPECT_TRUE(acl.IsValidIP(0x0A010206));
    EXPECT_FALSE(acl.IsValidIP(0));
    EXPECT_EQ(g_platform.resolutions, 1);
}

TEST_F(IPAclTest, AnAddressMappedIntoIPv6IsTheIPv4Address) {
    g_platform.addresses = {"::ffff:10.0.0.1"};
    Init();
    EXPECT_TRUE(acl.IsValidIP(kFirst));
    EXPECT_FALSE(acl.IsValidIP(kSecond));
}

TEST_F(IPAclTest, AnIPv4AddressInTheOldFormOfIPv6IsTheIPv4Address) {
    g_platform.addresses = {"::10.0.0.1"};
    Init();
    testing::internal::CaptureStderr();
    EXPECT_TRUE(acl.IsValidIP(kFirst));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_FALSE(acl.IsValidIP(0));
    EXPECT_FALSE(acl.IsValidIP(kSecond));
}

class IPAclUnusableTest : public IPAclTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(IPAclUnusableTest, CountsAsAddressZeroAndIsNotTold) {
    g_platform.addresses = {GetParam()};
    Init();
    testing::internal::CaptureStderr();
    acl.UpdateOssIp();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(IPAclProbe::Size(acl), 1u);
    EXPECT_TRUE(acl.IsValidIP(0));
    EXPECT_FALSE(acl.IsValidIP(kFirst));
    EXPECT_TRUE(acl.IsValidIP(kLoopback));
}

INSTANTIATE_TEST_SUITE_P(Values, IPAclUnusableTest,
                         ::testing::Values("", "10.0.0.1:99", "300.0.0.1", "10.0.0.1 ", "10.0.0.0/8",
                                           "::", "::1", "2001:db8::1", "no-such-host.invalid", "six.test",
                                           "0.0.0.0"));

TEST_F(IPAclTest, UnusableValuesLeaveTheOthersInForce) {
    g_platform.addresses = {"", "10.0.0.1", "300.0.0.1", std::string(300, 'x'), "10.0.0.2"};
    Init();
    EXPECT_TRUE(acl.IsValidIP(kFirst));
    EXPECT_TRUE(acl.IsValidIP(kSecond));
    EXPECT_EQ(IPAclProbe::Size(acl), 3u);
}

TEST_F(IPAclTest, AConfigurationThatRaisesPassesThroughAndUnlocks) {
    g_platform.addresses = {"10.0.0.1"};
    Init();
    EXPECT_FALSE(acl.IsValidIP(kSecond));
    clock.Advance(31);
    g_platform.onList = [] { throw std::runtime_error("no store"); };
    EXPECT_THROW(acl.IsValidIP(kFirst), std::runtime_error);
    EXPECT_EQ(IPAclProbe::TableLock(acl).tryacquire_write(), 0);
    IPAclProbe::TableLock(acl).release();
    EXPECT_TRUE(IPAclProbe::Holds(acl, kFirst)) << "raised before the old content was given up";

    g_platform.onList = nullptr;
    EXPECT_TRUE(acl.IsValidIP(kFirst));
    EXPECT_EQ(g_platform.lists, 3) << "the failed refresh does not count as one";
}

TEST_F(IPAclTest, AClockThatFailsCountsAsTheSecondBeforeTheEpoch) {
    g_platform.addresses = {"10.0.0.1"};
    Init();
    clock.Fail(true);
    EXPECT_TRUE(acl.IsValidIP(kSecond)) << "not due, so nothing was read";
    EXPECT_EQ(g_platform.lists, 0);
}

TEST_F(IPAclTest, AClockThatFailsAtTheEndOfARefreshIsStored) {
    acl.Init("", kPeriod, IPACL_OSS);
    g_platform.onList = [this] { clock.Fail(true); };
    acl.UpdateOssIp();
    EXPECT_EQ(g_platform.lists, 1);
    g_platform.onList = nullptr;
    clock.Fail(false);
    clock.Set(29, 999999);  // 30 whole seconds after the second before the epoch
    acl.UpdateOssIp();
    EXPECT_EQ(g_platform.lists, 1);
    clock.Set(30, 0);
    acl.UpdateOssIp();
    EXPECT_EQ(g_platform.lists, 2);
}

TEST_F(IPAclTest, AClockThatIsSetBackHoldsTheListUntilItHasCaughtUp) {
    Init();
    acl.UpdateOssIp();
    clock.Advance(-1000);
    acl.UpdateOssIp();
    EXPECT_EQ(g_platform.lists, 1);
    clock.Advance(1031);
    acl.UpdateOssIp();
    EXPECT_EQ(g_platform.lists, 2);
}

TEST_F(IPAclTest, ALockThatCanNotBeTakenFailsNoOperation) {
    g_platform.addresses = {"10.0.0.1"};
    Init();
    ASSERT_EQ(IPAclProbe::TableLock(acl).acquire_write(), 0);  // this thread can't take it a second time
    errno = 0;
    EXPECT_TRUE(acl.IsValidIP(kFirst));
    EXPECT_EQ(errno, EDEADLK);
    EXPECT_FALSE(acl.IsValidIP(kSecond));
    errno = 0;
    acl.Init("", kPeriod, IPACL_OSS);
    EXPECT_EQ(errno, EDEADLK);
    EXPECT_EQ(IPAclProbe::Size(acl), 0u);
    EXPECT_EQ(IPAclProbe::TableLock(acl).release(), 0);
    EXPECT_EQ(IPAclProbe::TableLock(acl).tryacquire_write(), 0) << "the failed attempts left nothing locked";
    IPAclProbe::TableLock(acl).release();
}

}  // namespace
