#include "demo/agent/core/peer_address.h"

#include <gtest/gtest.h>

namespace qv_demo {
namespace {

TEST(PeerAddress, TheHostIsWhatStandsAheadOfThePort) {
    EXPECT_EQ(HostOf("192.0.2.7:4711"), "192.0.2.7");
    EXPECT_EQ(HostOf("[2001:db8::1]:4711"), "2001:db8::1");
    EXPECT_EQ(HostOf("192.0.2.7"), "192.0.2.7");
    EXPECT_EQ(HostOf(""), "");
    EXPECT_EQ(HostOf("[]:1"), "[]");
}

TEST(PeerAddress, TheNumberIsInHostByteOrder) {
    EXPECT_EQ(IPv4Of("127.0.0.1:1"), 0x7F000001U);
    EXPECT_EQ(IPv4Of("192.0.2.7:4711"), 0xC0000207U);
}

TEST(PeerAddress, AnIPv4AddressWrittenAsIPv6Counts) {
    EXPECT_EQ(IPv4Of("[::ffff:192.0.2.7]:4711"), 0xC0000207U);
}

TEST(PeerAddress, WhatIsNoIPv4AddressIsInNoList) {
    for (const char* address : {"[2001:db8::1]:4711", "host:1", "", ":", "192.0.2:1", "192.0.2.7.1:1"}) {
        EXPECT_EQ(IPv4Of(address), kNoIPv4) << address;
    }
    EXPECT_NE(kNoIPv4, 0U) << "the number of a name that can't be resolved";
}

}  // namespace
}  // namespace qv_demo
