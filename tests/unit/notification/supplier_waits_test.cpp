// The waits and the clock as they are outside tests.
#include "notification/supplier_waits.h"

#include <gtest/gtest.h>

#include <chrono>

namespace qv_test {
namespace {

using Clock = std::chrono::steady_clock;
using NS_CORBA::g_supplierWaits;

TEST(SupplierWaits, ASignalledEventEndsTheWaitAndIsUsedUp) {
    ACE_Event event;
    event.signal();
    const Clock::time_point start = Clock::now();
    NS_CORBA::WaitFor(event, 60);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(30));
    const ACE_Time_Value moment(0, 1);
    EXPECT_NE(0, event.wait(&moment, 0));
}

TEST(SupplierWaits, TheTimeoutCountsFromNow) {
    ACE_Event event;
    const Clock::time_point start = Clock::now();
    g_supplierWaits.wait(event, ACE_Time_Value(0, 20000));
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(19));
}

TEST(SupplierWaits, TheClockIsTheTimeOfDay) {
    const time_t before = time(nullptr);
    const ACE_Time_Value now = g_supplierWaits.now();
    EXPECT_LE(before, now.sec() + 1);  // the two clocks may be read on either side of a tick
    EXPECT_GE(time(nullptr) + 1, now.sec());
}

ACE_Time_Value g_now;

TEST(SupplierWaits, MillisecondsAreRoundedDown) {
    const NS_CORBA::SupplierWaits former = g_supplierWaits;
    g_supplierWaits.now = [] { return g_now; };
    const ACE_Time_Value start(10, 999900);
    struct Case {
        time_t seconds;
        suseconds_t microseconds;
        long expected;
    };
    for (const Case& now :
         {Case{10, 999900, 0}, {11, 800, 0}, {11, 900, 1}, {13, 0, 2000}, {13, 999, 2001}}) {
        g_now.set(now.seconds, now.microseconds);
        EXPECT_EQ(now.expected, NS_CORBA::MillisecondsSince(start));
    }
    g_supplierWaits = former;
}

}  // namespace
}  // namespace qv_test
