// Events of several threads, with multi-thread pushing. A program of its own: the way of pushing is fixed at
// the first event.
#include <thread>

#include "tests/support/wait_for.h"
#include "tests/unit/notification/supplier_fixture.h"

namespace qv_test {
namespace {

class PushFromThreads : public SupplierTest {
  protected:
    PushFromThreads() : SupplierTest({{"bSingleThreadPushEvent", "0"}}) {}

    int Push(const std::string& type, const std::string& name = "") {
        StructuredEvent event = MakeEvent(type, name);
        return manager->PushEvent(event);
    }
};

TEST_F(PushFromThreads, SeveralAreInTheChannelAtOnceAndTheBufferIsFree) {
    EnterService();
    script().Block("push_structured_event");
    std::vector<std::thread> pushers;
    for (int i = 0; i < 3; ++i) {
        pushers.emplace_back([this] { EXPECT_EQ(0, Push("NT_TCA")); });
    }
    EXPECT_TRUE(script().WaitForCalls("push_structured_event", 3));
    EXPECT_TRUE(manager->IsBufEmpty());
    script().Release("push_structured_event");
    for (std::thread& pusher : pushers) {
        pusher.join();
    }
    EXPECT_EQ(3u, service->Events().size());
}

TEST_F(PushFromThreads, AFailedPushTakesTheLockAgainForTheBuffer) {
    EnterService();
    bool freeDuringPush = false;
    bool heldDuringLoss = false;
    script().On("push_structured_event", [&](int) {
        freeDuringPush = manager->IsBufEmpty();
        throw CORBA::TRANSIENT();
    });
    callback.onLoss = [&] { heldDuringLoss = BufferIsLocked(); };
    EXPECT_EQ(-1, Push("NT_TCA", "a"));
    EXPECT_TRUE(freeDuringPush);
    EXPECT_TRUE(heldDuringLoss);
    EXPECT_EQ((Texts{"a"}), NamesOf(probe->Buffer()));
    EXPECT_TRUE(manager->m_pCallBackObj == &callback && probe->Broken());
}

TEST_F(PushFromThreads, PushEventsIsALoopOfSinglePushes) {
    EnterService();
    probe->WasBroken() = true;
    std::vector<StructuredEvent> events = {MakeEvent("NT_TCA", "a"), MakeEvent("NT_TCA", "none", 0),
                                           MakeEvent("NT_UNKNOWN", "u"), MakeEvent("NT_ALARM", "b")};
    probe->Exit() = true;  // which a loop doesn't look at
    EXPECT_EQ(0, manager->PushEvents(events));
    EXPECT_EQ((Texts{"a", "b"}), NamesOf(service->Events()));
    ExpectDebug("push_event", 1, "[SuppilerMgr::PushEvent]: invalid event filterable_data will be discarded");
    ASSERT_EQ(2u, NotifyRecords().size());
    EXPECT_EQ(0u, NotifyRecords()[1].find("--- DisposalTime: 0ms, NotificationID:  "));
    probe->Exit() = false;
}

TEST_F(PushFromThreads, NothingIsLostWhenTheChannelComesAndGoes) {
    constexpr int kThreads = 4;
    constexpr int kEach = 100;
    EnterService();
    ASSERT_EQ(0, manager->open());
    waits.ReleaseAll();
    script().On("push_structured_event", [](int call) {
        if (call % 7 == 0) {
            throw CORBA::TRANSIENT();
        }
    });
    std::vector<std::thread> pushers;
    for (int i = 0; i < kThreads; ++i) {
        pushers.emplace_back([this] {
            for (int event = 0; event < kEach; ++event) {
                Push("NT_TCA");
            }
        });
    }
    for (int i = 0; i < 200; ++i) {
        manager->check_channel_valid();
    }
    for (std::thread& pusher : pushers) {
        pusher.join();
    }
    EXPECT_TRUE(WaitFor([this] { return manager->IsBufEmpty(); }));
    std::set<std::string> ids;
    for (const StructuredEvent& event : service->Events()) {
        ids.insert(FilterableText(event));
    }
    EXPECT_EQ(static_cast<std::size_t>(kThreads * kEach), ids.size());
    EXPECT_EQ(ids.size(), service->Events().size());
}

}  // namespace
}  // namespace qv_test
