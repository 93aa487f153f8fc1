// Many events at once, with single-thread pushing.
#include "tests/unit/notification/counted_semaphore.h"
#include "tests/unit/notification/supplier_fixture.h"
#include "time/timechange.h"

namespace qv_test {
namespace {

using Events = std::vector<StructuredEvent>;

constexpr char kBuffered[] =
    "[SuppilerMgr::PushEvent] Warning: The event channel is out of service, one event was buffered!";
constexpr char kDiscarded[] =
    "[SuppilerMgr::PushEvent] Warning: The buffer for notification event is overflowed, one event was "
    "discarded!";
constexpr char kLoss[] = "[SuppilerMgr::PushEvent] CORBA Notification Service: Event Loss Occurred!";

class PushBatch : public SupplierTest {
  protected:
    PushBatch() : SupplierTest({{"EventQueueLength", "60"}, {"bSingleThreadPushEvent", "1"}}) {}

    static Events Many(std::size_t count, const std::string& type = "NT_TCA") {
        Events events;
        for (std::size_t i = 0; i < count; ++i) {
            events.push_back(MakeEvent(type, std::to_string(i)));
        }
        return events;
    }
    static Texts NumbersFrom(int first, int end) {
        Texts names;
        for (; first < end; ++first) {
            names.push_back(std::to_string(first));
        }
        return names;
    }
    static bool Untouched(const StructuredEvent& event) {
        return FilterableText(event) == "value 0" && event.header.variable_header.length() == 0;
    }
    Texts SentNames() { return NamesOf(service->Events()); }
};

TEST_F(PushBatch, TakesTheLockOncePerHundredEvents) {
    EnterService();
    for (const auto& [count, taken] : {std::pair<std::size_t, int>{100, 1}, {101, 2}, {200, 2}, {0, 0}}) {
        Events events = Many(count);
        service->ClearEvents();
        const CountedSemaphore semaphore;
        EXPECT_EQ(0, manager->PushEvents(events));
        EXPECT_EQ(taken, semaphore.Taken()) << count;
        EXPECT_EQ(taken, semaphore.Given()) << count;
        EXPECT_EQ(NumbersFrom(0, static_cast<int>(count)), SentNames());
    }
}

TEST_F(PushBatch, StampsEveryEventInPlace) {
    EnterService();
    Events events = Many(3);
    manager->PushEvents(events);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(FilterableText(events[i]), FilterableText(service->Events()[i]));
        EXPECT_FALSE(Untouched(events[i]));
        TimeoutOf(events[i]);
    }
    EXPECT_EQ(3u, NotifyRecords().size());
}

TEST_F(PushBatch, WritesTheAlarmsOfABatchAtOnce) {
    EnterService();
    waits.SetStep(ACE_Time_Value(0, 7999));
    callback.alarmText = "{t}";
    Events events = Many(101, "NT_ALARM");
    const CountedSemaphore semaphore;
    EXPECT_EQ(0, manager->PushEvents(events));
    const Texts records = NotifyRecords();
    ASSERT_EQ(2u, records.size());
    std::size_t alarms = 0;
    for (std::size_t at = 0; (at = records[0].find("--- DisposalTime", at)) != std::string::npos; ++at) {
        ++alarms;
    }
    EXPECT_EQ(100u, alarms);
    const std::string id = FilterableText(events[100]);
    const std::string head = "--- DisposalTime: 7 ms, SendTime:  ";
    const std::string tail = ", NotificationID:  " + id +
                             ", EventType:  NT_ALARM\n---EventInfo: {{notificationId value " + id + "}{t}}\n";
    ASSERT_EQ(head.size() + 14 + tail.size(), records[1].size());
    EXPECT_EQ(head, records[1].substr(0, head.size()));
    EXPECT_EQ(tail, records[1].substr(head.size() + 14));
    EXPECT_LE(records[1].substr(head.size(), 14), NS_CORBA::TimeChange::getLocalTime());
    EXPECT_EQ(2, semaphore.Taken());
}

TEST_F(PushBatch, WritesTheAlarmsUnderTheLockAndBehindTheOtherEvents) {
    EnterService();
    bool held = false;
    m_log->SetWriteHook([&](const LogEntry& entry) {
        held = entry.text.find("NT_ALARM") != std::string::npos && BufferIsLocked();
    });
    Events events = {MakeEvent("NT_ALARM", "a"), MakeEvent("NT_TCA", "b")};
    manager->PushEvents(events);
    m_log->SetWriteHook({});
    ASSERT_EQ(2u, NotifyRecords().size());
    EXPECT_NE(std::string::npos, NotifyRecords()[0].find("NT_TCA"));
    EXPECT_EQ(0u, NotifyRecords()[1].find("--- DisposalTime: "));
    EXPECT_TRUE(held);
}

TEST_F(PushBatch, AnAlarmWhoseIdIsNoTextEndsTheRecordsOfItsBatch) {
    config().SetCorbaBundleName("qv_xden_corbaagent_bundle");
    EnterService();
    Events events = Many(3, "NT_ALARM");
    events[1].filterable_data[0].value <<= CORBA::Long(5);
    EXPECT_EQ(0, manager->PushEvents(events));
    EXPECT_EQ(3u, service->Events().size());
    ASSERT_EQ(1u, NotifyRecords().size());
    const std::string record = NotifyRecords()[0];
    const std::string end = ", NotificationID:  ";
    EXPECT_EQ(record.size() - end.size(), record.rfind(end));
    EXPECT_NE(std::string::npos, record.find("{notificationId value value 0}}\n--- DisposalTime: "));
}

TEST_F(PushBatch, OnlyUnregisteredTypesWriteNothing) {
    EnterService();
    Events events = Many(3, "NT_UNKNOWN");
    EXPECT_EQ(0, manager->PushEvents(events));
    EXPECT_TRUE(m_log->Entries().empty());
    EXPECT_TRUE(script().Calls().empty());
    EXPECT_TRUE(Untouched(events[0]));
}

TEST_F(PushBatch, AnEventWithoutFilterableDataIsPassedOver) {
    EnterService();
    Events events = {MakeEvent("NT_TCA", "none", 0), MakeEvent("NT_TCA", "a")};
    EXPECT_EQ(0, manager->PushEvents(events));
    EXPECT_EQ((Texts{"a"}), SentNames());
    ExpectDebug("push_batch", 1,
                "[SuppilerMgr::PushEventForBatch]: invalid event filterable_data will be discarded");
}

TEST_F(PushBatch, WaitsForTheBufferOnceAndEvenForNoEvents) {
    EnterService();
    probe->Put(MakeEvent("NT_TCA"));
    probe->WasBroken() = true;
    Events none;
    EXPECT_EQ(0, manager->PushEvents(none));
    EXPECT_EQ(4u, waits.Pauses().size());
    EXPECT_EQ("in service", State());
    Events events = Many(3);
    EXPECT_EQ(0, manager->PushEvents(events));
    EXPECT_EQ(4u, waits.Pauses().size());
}

TEST_F(PushBatch, AfterAFailureTheRestIsHeldBackWithoutATry) {
    EnterService();
    script().Raise<CORBA::TRANSIENT>("push_structured_event");
    Events events = Many(100);
    EXPECT_EQ(0, manager->PushEvents(events));
    EXPECT_EQ(1, script().Count("push_structured_event"));
    EXPECT_EQ(NumbersFrom(0, 60), NamesOf(probe->Buffer()));
    EXPECT_EQ((Texts{"loss"}), callback.Seen());
    EXPECT_EQ((Texts{FilterableText(events[0])}), callback.LostIds());
    Texts expected(60, kBuffered);
    expected.insert(expected.begin() + 1, kLoss);
    expected.insert(expected.end(), 40, kDiscarded);
    EXPECT_EQ(expected, Traces());
    ExpectTraces("push_event", expected);
    EXPECT_EQ("just failed", State());
    EXPECT_FALSE(Untouched(events[99]));
}

TEST_F(PushBatch, AFailureOnAFullBufferIsDiscardedAndAnnounced) {
    m_items.Set("EventQueueLength", "0");
    config().GetOption();
    EnterService();
    script().Raise<CORBA::TRANSIENT>("push_structured_event");
    Events events = Many(1);
    EXPECT_EQ(0, manager->PushEvents(events));
    ExpectTraces("push_event", {kDiscarded, kLoss});
    EXPECT_EQ((Texts{"loss"}), callback.Seen());
}

TEST_F(PushBatch, DuringAnOutageHeartbeatsAreDropped) {
    EnterService();
    LeaveService();
    Events events = {MakeEvent("NT_HEARTBEAT", "h"), MakeEvent("NT_TCA", "a")};
    EXPECT_EQ(0, manager->PushEvents(events));
    EXPECT_EQ((Texts{"a"}), NamesOf(probe->Buffer()));
    ExpectTraces("push_event", {kBuffered});
    EXPECT_TRUE(callback.Seen().empty());
}

TEST_F(PushBatch, AHeartbeatThatFailsIsBuffered) {
    EnterService();
    script().Raise<CORBA::TRANSIENT>("push_structured_event");
    Events events = {MakeEvent("NT_HEARTBEAT", "h")};
    EXPECT_EQ(0, manager->PushEvents(events));
    EXPECT_EQ((Texts{"h"}), NamesOf(probe->Buffer()));
}

TEST_F(PushBatch, AnExitBeforeTheCallLeavesAllUntouched) {
    EnterService();
    probe->Exit() = true;
    Events events = Many(2);
    const CountedSemaphore semaphore;
    EXPECT_EQ(0, manager->PushEvents(events));
    EXPECT_EQ(0, semaphore.Taken());
    EXPECT_TRUE(Untouched(events[0]));
    EXPECT_TRUE(script().Calls().empty());
}

TEST_F(PushBatch, AnExitBetweenBatchesLeavesTheRestUntouched) {
    EnterService();
    script().On("push_structured_event", [&](int call) { probe->Exit() = call == 100; });
    Events events = Many(101);
    EXPECT_EQ(0, manager->PushEvents(events));
    EXPECT_EQ(100u, service->Events().size());
    EXPECT_FALSE(Untouched(events[99]));
    EXPECT_TRUE(Untouched(events[100]));
}

TEST_F(PushBatch, AnExitWithinABatchStopsBehindItsEventAndStillWritesTheAlarms) {
    EnterService();
    script().On("push_structured_event", [&](int call) { probe->Exit() = call == 2; });
    Events events = Many(5, "NT_ALARM");
    EXPECT_EQ(0, manager->PushEvents(events));
    EXPECT_EQ((Texts{"0", "1"}), SentNames());
    EXPECT_TRUE(Untouched(events[2]));
    ASSERT_EQ(1u, NotifyRecords().size());
    EXPECT_NE(std::string::npos, NotifyRecords()[0].find(FilterableText(events[1])));
}

TEST_F(PushBatch, APulledFileTransferThatIsTooShortEndsTheCall) {
    EnterService();
    Events events = {MakeEvent("NT_ALARM", "a"), MakeEvent("NT_PULL_FILE_TRANSFER_STATUS", "p", 4),
                     MakeEvent("NT_TCA", "b")};
    const CountedSemaphore semaphore;
    EXPECT_THROW(manager->PushEvents(events), CORBA::BAD_PARAM);
    EXPECT_EQ(semaphore.Taken(), semaphore.Given());
    EXPECT_TRUE(manager->IsBufEmpty());
    EXPECT_EQ((Texts{"a", "p"}), SentNames());
    EXPECT_TRUE(Untouched(events[2]));
    EXPECT_TRUE(NotifyRecords().empty());
}

TEST_F(PushBatch, MasksPulledFileTransfersBehindThePush) {
    EnterService();
    Events events = {MakeEvent("NT_PULL_FILE_TRANSFER_STATUS", "p", 5)};
    EXPECT_EQ(0, manager->PushEvents(events));
    EXPECT_EQ("value 4", FilterableText(service->Events()[0], 4));
    EXPECT_EQ("******", FilterableText(events[0], 4));
    ASSERT_EQ(1u, NotifyRecords().size());
    EXPECT_EQ(std::string::npos, NotifyRecords()[0].find("value 4"));
}

TEST_F(PushBatch, TheDisposalTimeOfAnAlarmCoversItsStamping) {
    EnterService();
    waits.SetStep(ACE_Time_Value(2, 0));  // two looks: before the checks of the event and behind its push
    Events events = Many(2, "NT_ALARM");
    manager->PushEvents(events);
    const std::string record = NotifyRecords()[0];
    EXPECT_EQ(0u, record.find("--- DisposalTime: 2000 ms, SendTime:  "));
    EXPECT_NE(std::string::npos, record.find("\n--- DisposalTime: 2000 ms, SendTime:  "));
}

}  // namespace
}  // namespace qv_test
