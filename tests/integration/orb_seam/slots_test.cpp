// Slots of requests and threads (CORBA 3.0, 21.4).

#include <gtest/gtest.h>

#include <thread>

#include "both_sides.h"

namespace {

using namespace qv_test;
using Info = Probe::Info;
using PortableInterceptor::SlotId;

CORBA::Any AnyOf(CORBA::Long value) {
    CORBA::Any any;
    any <<= value;
    return any;
}

/// The number in a slot, -1 while nothing was set.
CORBA::Long Number(CORBA::Any* owned) {
    const CORBA::Any_var any = owned;
    CORBA::Long number = -1;
    return (any.in() >>= number) ? number : -1;
}

PortableInterceptor::Current_ptr PiCurrent(CORBA::ORB_ptr orb) {
    const CORBA::Object_var object = orb->resolve_initial_references("PICurrent");
    return PortableInterceptor::Current::_narrow(object.in());
}

SeamServer::Options TwoSlots() {
    SeamServer::Options options;
    options.slots = 2;
    return options;
}

class SlotsTest : public BothSidesTest {
  protected:
    SlotsTest() : BothSidesTest(TwoSlots()), current(PiCurrent(server.orb())), slot(server.slot) {}

    PortableInterceptor::Current_var current;
    const SlotId slot;
};

INSTANTIATE_TEST_SUITE_P(From, SlotsTest, ::testing::Values(true, false), SideName);

TEST_P(SlotsTest, WhatAPointSetsTheServantSeesAndTheOtherWayRound) {
    CORBA::Long in_servant = 0;
    CORBA::Long in_reply = 0;
    server.b->contexts = [&](Info info) { info->set_slot(slot, AnyOf(11)); };
    server.servant.on_call = [&](const std::string&) {
        in_servant = Number(current->get_slot(slot));
        current->set_slot(slot, AnyOf(12));
    };
    server.a->reply = [&](Info info) { in_reply = Number(info->get_slot(slot)); };
    Call("title");
    EXPECT_EQ(in_servant, 11);
    EXPECT_EQ(in_reply, 12);
}

TEST_P(SlotsTest, EachRequestStartsWithEmptySlots) {
    std::vector<CORBA::Long> seen;
    server.a->contexts = [&](Info info) {
        seen.push_back(Number(info->get_slot(slot)));
        info->set_slot(slot, AnyOf(5));
    };
    Call("title");
    Call("title");
    EXPECT_EQ(seen, (std::vector<CORBA::Long>{-1, -1}));
}

TEST_P(SlotsTest, UnsetSlotIsOfKindNull) {
    CORBA::TCKind kind = CORBA::tk_any;
    server.a->contexts = [&](Info info) {
        const CORBA::Any_var any = info->get_slot(slot + 1);
        const CORBA::TypeCode_var type = any->type();
        kind = type->kind();
    };
    Call("title");
    EXPECT_EQ(kind, CORBA::tk_null);
}

TEST_P(SlotsTest, TheCallersThreadKeepsItsOwn) {
    current->set_slot(slot, AnyOf(1));
    server.b->contexts = [&](Info info) { info->set_slot(slot, AnyOf(2)); };
    server.servant.on_call = [&](const std::string&) { current->set_slot(slot, AnyOf(3)); };
    Call("title");
    EXPECT_EQ(Number(current->get_slot(slot)), 1);
}

TEST_P(SlotsTest, NestedCollocatedCallHasItsOwn) {
    CORBA::Long inner_at_start = 0;
    CORBA::Long outer_after = 0;
    server.servant.on_call = [&](const std::string& operation) {
        if (operation == "inherited") {
            current->set_slot(slot, AnyOf(21));
            server.Collocated("title");
            outer_after = Number(current->get_slot(slot));
        } else {
            inner_at_start = Number(current->get_slot(slot));
            current->set_slot(slot, AnyOf(22));
        }
    };
    Call("inherited");
    EXPECT_EQ(inner_at_start, -1);
    EXPECT_EQ(outer_after, 21);
}

TEST(SlotsOfThreadsTest, OneThreadDoesNotSeeThoseOfAnother) {
    SeamServer server(TwoSlots());
    const PortableInterceptor::Current_var current = PiCurrent(server.orb());
    current->set_slot(server.slot, AnyOf(1));
    CORBA::Long elsewhere = 0;
    std::thread([&] { elsewhere = Number(current->get_slot(server.slot)); }).join();
    EXPECT_EQ(elsewhere, -1);
    EXPECT_EQ(Number(current->get_slot(server.slot)), 1);
}

TEST(SlotsOfThreadsTest, ANewOrbStartsWithEmptySlots) {
    {
        SeamServer server(TwoSlots());
        PortableInterceptor::Current_var(PiCurrent(server.orb()))->set_slot(server.slot, AnyOf(1));
    }
    SeamServer server(TwoSlots());
    const PortableInterceptor::Current_var current = PiCurrent(server.orb());
    EXPECT_EQ(Number(current->get_slot(server.slot)), -1);
}

TEST(SlotsOfThreadsTest, ANumberThatWasNotAllocatedIsInvalid) {
    SeamServer server(TwoSlots());
    const PortableInterceptor::Current_var current = PiCurrent(server.orb());
    EXPECT_THROW(current->get_slot(2), PortableInterceptor::InvalidSlot);
    EXPECT_THROW(current->set_slot(2, AnyOf(1)), PortableInterceptor::InvalidSlot);
}

}  // namespace
