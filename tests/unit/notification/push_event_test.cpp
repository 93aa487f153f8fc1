// One event at a time, with single-thread pushing.
#include <stdexcept>
#include <thread>

#include "tests/support/wait_for.h"
#include "tests/unit/notification/supplier_fixture.h"
#include "time/timechange.h"

namespace qv_test {
namespace {

constexpr char kSource[] = "push_event";
constexpr char kBuffered[] =
    "[SuppilerMgr::PushEvent] Warning: The event channel is out of service, one event was buffered!";
constexpr char kDiscarded[] =
    "[SuppilerMgr::PushEvent] Warning: The buffer for notification event is overflowed, one event was "
    "discarded!";
constexpr char kLoss[] = "[SuppilerMgr::PushEvent] CORBA Notification Service: Event Loss Occurred!";
constexpr char kEnter[] = "[SuppilerMgr::waitForSVCProcess] enter";
constexpr char kExit[] = "[SuppilerMgr::waitForSVCProcess] exit";

class PushEvent : public SupplierTest {
  protected:
    PushEvent() : SupplierTest({{"EventQueueLength", "2"}, {"bSingleThreadPushEvent", "1"}}) {}

    int Push(const std::string& type, const std::string& name = "", CORBA::ULong entries = 1) {
        StructuredEvent event = MakeEvent(type, name, entries);
        return manager->PushEvent(event);
    }
    /// Out of service, with the types registered.
    void StartBroken() {
        EnterService();
        LeaveService();
    }
    Texts SentNames() { return NamesOf(service->Events()); }
    Texts BufferedNames() { return NamesOf(probe->Buffer()); }
};

TEST_F(PushEvent, GoesThroughStampedAndLogged) {
    EnterService();
    StructuredEvent event = MakeEvent("NT_TCA", "a", 2);
    EXPECT_EQ(0, manager->PushEvent(event));
    ASSERT_EQ(1u, service->Events().size());
    const StructuredEvent sent = service->Events()[0];
    EXPECT_EQ("a", NameOf(sent));
    EXPECT_EQ(FilterableText(event), FilterableText(sent));
    EXPECT_NE("value 0", FilterableText(sent));
    EXPECT_EQ(TimeoutOf(event), TimeoutOf(sent));
    EXPECT_TRUE(Traces().empty());
    ASSERT_EQ(1u, NotifyRecords().size());
    EXPECT_NE(std::string::npos, NotifyRecords()[0].find(FilterableText(event)));
    EXPECT_TRUE(callback.Seen().empty());
    EXPECT_TRUE(probe->Buffer().empty());
}

TEST_F(PushEvent, AnUnregisteredTypeIsDroppedWithoutAWord) {
    EnterService();
    StructuredEvent event = MakeEvent("NT_UNKNOWN");
    EXPECT_EQ(0, manager->PushEvent(event));
    EXPECT_EQ("value 0", FilterableText(event));
    EXPECT_EQ(0u, event.header.variable_header.length());
    EXPECT_TRUE(service->Events().empty());
    EXPECT_TRUE(m_log->Entries().empty());
}

TEST_F(PushEvent, AnUnregisteredTypeNeedsNeitherChannelNorLock) {
    StartBroken();
    const EventBufferGuard held;
    EXPECT_EQ(0, Push("NT_UNKNOWN"));
    EXPECT_TRUE(m_log->Entries().empty());
}

TEST_F(PushEvent, AnEventWithoutFilterableDataIsRefusedUnstamped) {
    EnterService();
    StructuredEvent event = MakeEvent("NT_TCA", "", 0);
    EXPECT_EQ(-1, manager->PushEvent(event));
    EXPECT_EQ(0u, event.header.variable_header.length());
    EXPECT_TRUE(service->Events().empty());
    EXPECT_TRUE(Traces().empty());
    ExpectDebug(kSource, 1, "[SuppilerMgr::PushEvent]: invalid event filterable_data will be discarded");
    EXPECT_TRUE(probe->Buffer().empty());
}

TEST_F(PushEvent, DuringAnOutageEventsAreBufferedUpToTheLimit) {
    StartBroken();
    EXPECT_EQ(-1, Push("NT_TCA", "a"));
    EXPECT_EQ(-1, Push("NT_ALARM", "b"));
    ExpectTraces(kSource, {kBuffered, kBuffered});
    EXPECT_EQ(-1, Push("NT_TCA", "c"));
    ExpectTraces(kSource, {kBuffered, kBuffered, kDiscarded});
    EXPECT_EQ((Texts{"a", "b"}), BufferedNames());
    EXPECT_TRUE(callback.Seen().empty());
    EXPECT_EQ(0, script().Count("push_structured_event"));
    EXPECT_TRUE(NotifyRecords().empty());
}

TEST_F(PushEvent, BuffersACopyWithItsStamp) {
    StartBroken();
    StructuredEvent event = MakeEvent("NT_TCA", "a");
    EXPECT_EQ(-1, manager->PushEvent(event));
    const std::string id = FilterableText(event);
    EXPECT_NE("value 0", id);
    event.filterable_data[0].value <<= "changed";
    ASSERT_EQ(1u, probe->Buffer().size());
    EXPECT_EQ(id, FilterableText(probe->Buffer()[0]));
    TimeoutOf(probe->Buffer()[0]);
}

TEST_F(PushEvent, AQueueOfNoLengthBuffersNothing) {
    m_items.Set("EventQueueLength", "0");
    config().GetOption();
    StartBroken();
    EXPECT_EQ(-1, Push("NT_TCA"));
    ExpectTraces(kSource, {kDiscarded});
    EXPECT_TRUE(probe->Buffer().empty());
}

TEST_F(PushEvent, BeforeTheFirstInitEveryTypeIsUnregistered) {
    EXPECT_EQ(0, Push("NT_TCA"));
    manager->regist("NT_TCA");
    EXPECT_EQ(-1, Push("NT_TCA"));
    EXPECT_EQ(1u, probe->Buffer().size());
}

TEST_F(PushEvent, AHeartbeatOfAnOutageIsDroppedWithoutAWord) {
    StartBroken();
    EXPECT_EQ(-1, Push("NT_HEARTBEAT"));
    EXPECT_TRUE(probe->Buffer().empty());
    EXPECT_TRUE(m_log->Entries().empty());
}

TEST_F(PushEvent, WithoutAServantEventsAreHeldBack) {
    EnterService();
    NS_CORBA::RefCount<NS_CORBA::SuppilerImpl>* const servant = probe->Servant();
    probe->Servant() = nullptr;
    EXPECT_EQ(-1, Push("NT_TCA", "a"));
    EXPECT_EQ(-1, Push("NT_HEARTBEAT", "b"));
    ExpectTraces(kSource, {kBuffered});
    EXPECT_EQ((Texts{"a"}), BufferedNames());
    probe->Servant() = servant;
}

TEST_F(PushEvent, AFailedPushIsBufferedAndAnnounced) {
    EnterService();
    script().Raise<CORBA::TRANSIENT>("push_structured_event");
    StructuredEvent event = MakeEvent("NT_TCA", "a");
    const std::string before = NS_CORBA::TimeChange::getTime();
    EXPECT_EQ(-1, manager->PushEvent(event));
    const std::string after = NS_CORBA::TimeChange::getTime();
    EXPECT_EQ("just failed", State());
    EXPECT_EQ((Texts{"a"}), BufferedNames());
    EXPECT_EQ((Texts{kBuffered, kLoss}), Traces());
    ExpectTraced(kSource, kBuffered);
    ExpectTraced(kSource, kLoss);
    EXPECT_EQ((Texts{"loss"}), callback.Seen());
    EXPECT_EQ((Texts{FilterableText(event)}), callback.LostIds());
    EXPECT_LE(before, callback.Times()[0]);
    EXPECT_GE(after, callback.Times()[0]);
    EXPECT_TRUE(NotifyRecords().empty());
}

TEST_F(PushEvent, AFailedPushOnAFullBufferIsLostAndAnnounced) {
    EnterService();
    probe->Put(MakeEvent("NT_TCA", "x"));
    probe->Put(MakeEvent("NT_TCA", "y"));
    script().Raise<CORBA::TRANSIENT>("push_structured_event");
    EXPECT_EQ(-1, Push("NT_TCA", "a"));
    EXPECT_EQ((Texts{"x", "y"}), BufferedNames());
    EXPECT_EQ((Texts{kDiscarded, kLoss}), Traces());
    EXPECT_EQ((Texts{"loss"}), callback.Seen());
    EXPECT_TRUE(probe->Broken());
}

TEST_F(PushEvent, AHeartbeatWhoseOwnPushFailsIsBuffered) {
    EnterService();
    script().Raise<CORBA::TRANSIENT>("push_structured_event");
    EXPECT_EQ(-1, Push("NT_HEARTBEAT", "h"));
    EXPECT_EQ((Texts{"h"}), BufferedNames());
    EXPECT_EQ((Texts{"loss"}), callback.Seen());
}

TEST_F(PushEvent, AnAlarmWithItsOwnIdIsLostWithAnEmptyOne) {
    config().SetCorbaBundleName("qv_xden_corbaagent_bundle");
    EnterService();
    script().Raise<CORBA::TRANSIENT>("push_structured_event");
    EXPECT_EQ(-1, Push("NT_ALARM"));
    EXPECT_EQ((Texts{""}), callback.LostIds());
    EXPECT_EQ("value 0", FilterableText(probe->Buffer()[0]));
}

TEST_F(PushEvent, AFailedPushWithoutACallbackObjectGoesOn) {
    EnterService();
    manager->m_pCallBackObj = nullptr;
    script().Raise<CORBA::TRANSIENT>("push_structured_event");
    EXPECT_EQ(-1, Push("NT_TCA"));
    EXPECT_EQ((Texts{kBuffered, "[SuppilerMgr::EventLossOccurred] CallBackObj is null", kLoss}), Traces());
    EXPECT_EQ(1u, probe->Buffer().size());
}

TEST_F(PushEvent, AnAlarmsRecordTellsTimeIdAndText) {
    EnterService();
    waits.SetStep(ACE_Time_Value(1, 234567));
    callback.alarmText = "{name probableCause value LOS}";
    StructuredEvent event = MakeEvent("NT_ALARM");
    EXPECT_EQ(0, manager->PushEvent(event));
    const std::string id = FilterableText(event);
    EXPECT_EQ((Texts{"--- DisposalTime: 1234ms, NotificationID:  " + id +
                     ", EventType:  NT_ALARM\n---EventInfo: {{notificationId value " + id +
                     "}{name probableCause value LOS}}\n"}),
              NotifyRecords());
    EXPECT_EQ((Texts{"text"}), callback.Seen());
}

TEST_F(PushEvent, AnAlarmsRecordIsMadeWithoutTheLock) {
    EnterService();
    bool empty = false;
    callback.onText = [&] { empty = manager->IsBufEmpty(); };
    EXPECT_EQ(0, Push("NT_ALARM"));
    EXPECT_TRUE(empty);
}

TEST_F(PushEvent, APulledFileTransferIsMaskedOnlyBehindThePush) {
    EnterService();
    StructuredEvent event = MakeEvent("NT_PULL_FILE_TRANSFER_STATUS", "", 6);
    EXPECT_EQ(0, manager->PushEvent(event));
    EXPECT_EQ("value 4", FilterableText(service->Events()[0], 4));
    EXPECT_EQ("******", FilterableText(event, 4));
    EXPECT_EQ("value 3", FilterableText(event, 3));
    EXPECT_EQ("value 5", FilterableText(event, 5));
    ASSERT_EQ(1u, NotifyRecords().size());
    EXPECT_EQ(std::string::npos, NotifyRecords()[0].find("value 4"));
    EXPECT_NE(std::string::npos, NotifyRecords()[0].find("******"));
}

TEST_F(PushEvent, APulledFileTransferThatIsTooShortRaisesAfterThePush) {
    EnterService();
    StructuredEvent event = MakeEvent("NT_PULL_FILE_TRANSFER_STATUS", "a", 4);
    EXPECT_THROW(manager->PushEvent(event), CORBA::BAD_PARAM);
    EXPECT_EQ((Texts{"a"}), SentNames());
    EXPECT_TRUE(NotifyRecords().empty());
    EXPECT_TRUE(manager->IsBufEmpty());
    EXPECT_EQ(0, Push("NT_TCA"));
}

TEST_F(PushEvent, WhatTheCallbackRaisesPassesWithTheLockReleased) {
    EnterService();
    script().Raise<CORBA::TRANSIENT>("push_structured_event");
    callback.onLoss = [] { throw std::runtime_error("bundle"); };
    StructuredEvent event = MakeEvent("NT_TCA");
    EXPECT_THROW(manager->PushEvent(event), std::runtime_error);
    EXPECT_FALSE(manager->IsBufEmpty());
}

TEST_F(PushEvent, APusherAfterAnOutageGivesTheThreadsFourSecondsAtMost) {
    EnterService();
    probe->Put(MakeEvent("NT_TCA", "old"));
    probe->WasBroken() = true;
    EXPECT_EQ(0, Push("NT_TCA", "new"));
    EXPECT_EQ((std::vector<long>{1, 1, 1, 1}), waits.Pauses());
    ExpectTraces(kSource, {kEnter, "[SuppilerMgr::waitForSVCProcess] waitting: 0",
                           "[SuppilerMgr::waitForSVCProcess] waitting: 1",
                           "[SuppilerMgr::waitForSVCProcess] waitting: 2",
                           "[SuppilerMgr::waitForSVCProcess] waitting: 3", kExit});
    EXPECT_EQ("in service", State());
    EXPECT_EQ((Texts{"new"}), SentNames());

    Forget();
    EXPECT_EQ(0, Push("NT_TCA", "next"));
    EXPECT_TRUE(Traces().empty());
    EXPECT_EQ(4u, waits.Pauses().size());
}

TEST_F(PushEvent, APusherAfterAnOutageWaitsNoLongerThanTheBufferIsFull) {
    EnterService();
    probe->Put(MakeEvent("NT_TCA", "old"));
    probe->WasBroken() = true;
    waits.OnPause([this](int pause) {
        if (pause == 2) {
            probe->ClearBuffer();
        }
    });
    EXPECT_EQ(0, Push("NT_TCA"));
    EXPECT_EQ(2u, waits.Pauses().size());
    EXPECT_EQ("[SuppilerMgr::waitForSVCProcess] waitting: 1", Traces()[2]);
    EXPECT_EQ(kExit, Traces()[3]);
}

TEST_F(PushEvent, WithAnEmptyBufferNobodyWaits) {
    EnterService();
    probe->WasBroken() = true;
    EXPECT_EQ(0, Push("NT_UNKNOWN"));
    ExpectTraces(kSource, {kEnter, kExit});
    EXPECT_TRUE(waits.Pauses().empty());
    EXPECT_EQ("in service", State());
}

TEST_F(PushEvent, APusherAfterAFreshFailureOnlyTracesExit) {
    EnterService();
    probe->Broken() = true;
    EXPECT_EQ(-1, Push("NT_HEARTBEAT"));
    ExpectTraces(kSource, {kExit});
    EXPECT_EQ("out of service", State());
    EXPECT_TRUE(waits.Pauses().empty());
}

TEST_F(PushEvent, PushesAreSerialAndHoldTheLock) {
    EnterService();
    script().Block("push_structured_event");
    std::thread first([this] { EXPECT_EQ(0, Push("NT_TCA", "a")); });
    EXPECT_TRUE(script().WaitForCalls("push_structured_event", 1));
    std::atomic<bool> looked{false};
    std::thread second([this] { EXPECT_EQ(0, Push("NT_TCA", "b")); });
    std::thread looker([&] {
        manager->IsBufEmpty();
        looked = true;
    });
    EXPECT_TRUE(BufferIsLocked());
    EXPECT_EQ(1, script().Count("push_structured_event"));
    EXPECT_FALSE(looked);
    script().Release("push_structured_event");
    first.join();
    second.join();
    looker.join();
    EXPECT_EQ((Texts{"a", "b"}), SentNames());
}

TEST_F(PushEvent, TheWayOfPushingIsFixedAtTheFirstEvent) {
    EnterService();
    EXPECT_EQ(0, Push("NT_TCA", "a"));
    m_items.Set("bSingleThreadPushEvent", "0");
    config().GetOption();
    ASSERT_FALSE(config().IsSingleThreadPushEvent());
    bool locked = false;
    script().On("push_structured_event", [&](int) { locked = BufferIsLocked(); });
    EXPECT_EQ(0, Push("NT_TCA", "b"));
    EXPECT_TRUE(locked);
}

}  // namespace
}  // namespace qv_test
