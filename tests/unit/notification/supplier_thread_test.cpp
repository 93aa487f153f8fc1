// The two threads that drain the buffer.
#include <stdexcept>

#include "tests/support/wait_for.h"
#include "tests/unit/notification/supplier_fixture.h"

namespace qv_test {
namespace {

constexpr char kSource[] = "supplier_thread";
constexpr char kLoss[] = "[SuppilerMgr::PushEvent] CORBA Notification Service: Event Loss Occurred!";

class SupplierThread : public SupplierTest {
  protected:
    ~SupplierThread() override { qv_standalone::SetRunState(0); }

    void Open() {
        ASSERT_EQ(0, manager->open());
        ASSERT_TRUE(waits.WaitForResting(2));
    }
    void Put(const std::string& type, const std::string& name, CORBA::ULong entries = 1) {
        probe->Put(MakeEvent(type, name, entries));
    }
    Texts SentNames() { return NamesOf(service->Events()); }
};

TEST_F(SupplierThread, SendsTheBufferOldestFirst) {
    EnterService();
    Open();
    Put("NT_TCA", "a");
    Put("NT_STATE_CHANGE", "b");
    Put("NT_TCA", "c");
    ASSERT_TRUE(waits.Tick());
    EXPECT_EQ((Texts{"a", "b", "c"}), SentNames());
    EXPECT_TRUE(manager->IsBufEmpty());
    EXPECT_EQ(3u, NotifyRecords().size());
    EXPECT_TRUE(callback.Seen().empty());
    EXPECT_TRUE(Traces().empty());
}

TEST_F(SupplierThread, WaitsOneSecondDuringAnOutageAndTwoInService) {
    Open();
    EXPECT_EQ((std::vector<long>{1, 1}), waits.Rests());
    for (const auto& [broken, wasBroken, seconds] :
         {std::tuple<bool, bool, long>{true, false, 1}, {false, true, 1}, {false, false, 2}}) {
        probe->Broken() = broken;
        probe->WasBroken() = wasBroken;
        ASSERT_TRUE(waits.Tick());
        EXPECT_EQ(seconds, waits.Rests().back());
    }
}

TEST_F(SupplierThread, TriesTheBufferDuringAnOutageAndClearsNoFlag) {
    EnterService();
    LeaveService();
    Open();
    Put("NT_TCA", "a");
    ASSERT_TRUE(waits.Tick());
    EXPECT_EQ((Texts{"a"}), SentNames());
    EXPECT_EQ("out of service", State());
}

TEST_F(SupplierThread, AnEventThatFailsStaysInFrontAndIsAnnouncedAtEachTry) {
    EnterService();
    Open();
    Put("NT_TCA", "a");
    Put("NT_TCA", "b");
    script().Raise<CORBA::TRANSIENT>("push_structured_event");
    ASSERT_TRUE(waits.Tick());
    EXPECT_EQ("just failed", State());
    ASSERT_TRUE(waits.Tick());
    EXPECT_EQ("just failed", State());
    EXPECT_EQ(2, script().Count("push_structured_event"));
    EXPECT_EQ((Texts{"a", "b"}), NamesOf(probe->Buffer()));
    EXPECT_EQ((Texts{"value 0", "value 0"}), callback.LostIds());
    ExpectTraces(kSource, {kLoss, kLoss});
    script().On("push_structured_event", {});
    ASSERT_TRUE(waits.Tick());
    EXPECT_EQ((Texts{"a", "b"}), SentNames());
}

TEST_F(SupplierThread, AFailureWhileSettlingIsAnOutage) {
    EnterService();
    probe->WasBroken() = true;
    Open();
    Put("NT_TCA", "a");
    script().Raise<CORBA::TRANSIENT>("push_structured_event");
    ASSERT_TRUE(waits.Tick());
    EXPECT_EQ("out of service", State());
}

TEST_F(SupplierThread, AFailedEventWithoutFilterableDataIsTraced) {
    EnterService();
    Open();
    Put("NT_TCA", "a", 0);
    script().Raise<CORBA::TRANSIENT>("push_structured_event");
    ASSERT_TRUE(waits.Tick());
    ExpectTraces(kSource,
                 {"[SuppilerMgr::PushEvent] CORBA Notification Service: Event Loss Occurred! - Empty "
                  "filter."});
    EXPECT_TRUE(callback.Seen().empty());
    EXPECT_TRUE(probe->Broken());
    EXPECT_EQ(1u, probe->Buffer().size());
}

TEST_F(SupplierThread, AFailedEventWithoutATextAsIdIsTraced) {
    EnterService();
    Open();
    StructuredEvent event = MakeEvent("NT_TCA");
    event.filterable_data[0].value <<= CORBA::Long(1);
    probe->Put(event);
    script().Raise<CORBA::TRANSIENT>("push_structured_event");
    ASSERT_TRUE(waits.Tick());
    ExpectTraces(kSource, {"[SuppilerMgr::PushEvent] CORBA Notification Service: Event Loss Occurred! - "
                           "Invalid Id."});
    EXPECT_TRUE(callback.Seen().empty());
    EXPECT_TRUE(probe->Broken());
}

TEST_F(SupplierThread, AnAlarmsRecordEndsWithoutALine) {
    EnterService();
    Open();
    waits.SetStep(ACE_Time_Value(0, 12000));
    callback.alarmText = "{t}";
    Put("NT_ALARM", "a");
    ASSERT_TRUE(waits.Tick());
    ASSERT_EQ(1u, NotifyRecords().size());
    const std::string record = NotifyRecords()[0];
    const std::string head = "--- DisposalTime: 12 ms, SendTime:  ";
    EXPECT_EQ(head, record.substr(0, head.size()));
    EXPECT_EQ(
        ", NotificationID:  value 0, EventType:  NT_ALARM\n---EventInfo: {{notificationId value value "
        "0}{t}}",
        record.substr(head.size() + 14));
}

TEST_F(SupplierThread, AnAlarmWithoutFilterableDataIsLoggedLikeOtherEvents) {
    EnterService();
    Open();
    Put("NT_ALARM", "a", 0);
    ASSERT_TRUE(waits.Tick());
    EXPECT_EQ((Texts{"a"}), SentNames());
    ASSERT_EQ(1u, NotifyRecords().size());
    EXPECT_EQ(std::string::npos, NotifyRecords()[0].find("DisposalTime"));
    EXPECT_TRUE(callback.Seen().empty());
}

TEST_F(SupplierThread, APulledFileTransferIsLoggedAsItIs) {
    EnterService();
    Open();
    Put("NT_PULL_FILE_TRANSFER_STATUS", "p", 5);
    Put("NT_PULL_FILE_TRANSFER_STATUS", "q", 2);
    ASSERT_TRUE(waits.Tick());
    EXPECT_EQ((Texts{"p", "q"}), SentNames());
    EXPECT_NE(std::string::npos, NotifyRecords()[0].find("value 4"));
}

TEST_F(SupplierThread, HoldsTheLockThroughTheDrainItsLogIncluded) {
    EnterService();
    Open();
    Put("NT_ALARM", "a");
    Put("NT_TCA", "b");
    std::atomic<int> held{0};
    const auto look = [&] { held += BufferIsLocked() ? 1 : 0; };
    script().On("push_structured_event", [&](int) { look(); });
    callback.onText = look;
    m_log->SetWriteHook([&](const LogEntry&) { look(); });
    ASSERT_TRUE(waits.Tick());
    m_log->SetWriteHook({});
    EXPECT_EQ(5, held);  // two pushes, a text, two records
}

TEST_F(SupplierThread, SurvivesWhateverTheCallbackRaises) {
    EnterService();
    Open();
    Put("NT_ALARM", "a");
    callback.onText = [] { throw std::runtime_error("bundle"); };
    ASSERT_TRUE(waits.Tick());
    ExpectTraces(kSource, {"[SuppilerMgr::svc] CORBA Notification Service: Event Loss Occurred!"});
    EXPECT_EQ((Texts{"a"}), NamesOf(probe->Buffer()));
    callback.onText = [] { throw 5; };
    ASSERT_TRUE(waits.Tick());
    callback.onText = {};
    ASSERT_TRUE(waits.Tick());
    EXPECT_TRUE(manager->IsBufEmpty());
    EXPECT_EQ((Texts{"a", "a", "a"}), SentNames());
}

TEST_F(SupplierThread, SurvivesALogThatRaisesDuringAnOutage) {
    EnterService();
    Open();
    Put("NT_TCA", "a");
    script().Raise<CORBA::TRANSIENT>("push_structured_event");
    m_log->SetWriteHook([](const LogEntry&) { throw std::runtime_error("full"); });
    ASSERT_TRUE(waits.Tick());
    ASSERT_TRUE(waits.Tick());
    m_log->SetWriteHook({});
    EXPECT_EQ(2, script().Count("push_structured_event"));
    EXPECT_EQ((Texts{"a"}), NamesOf(probe->Buffer()));
    script().On("push_structured_event", {});
    ASSERT_TRUE(waits.Tick());
    EXPECT_EQ((Texts{"a"}), SentNames());
    EXPECT_EQ(2u, manager->thr_count());
}

TEST_F(SupplierThread, WithoutAServantTheBufferStays) {
    EnterService();
    NS_CORBA::RefCount<NS_CORBA::SuppilerImpl>* const servant = probe->Servant();
    probe->Servant() = nullptr;
    Put("NT_TCA", "a");
    Open();
    ASSERT_TRUE(waits.Tick());
    EXPECT_EQ((Texts{"value 0"}), callback.LostIds());
    EXPECT_EQ(1u, probe->Buffer().size());
    probe->Servant() = servant;
}

TEST_F(SupplierThread, EndsWithTheProcessThoughNobodyCalledExitThread) {
    EnterService();
    Open();
    Put("NT_TCA", "a");
    qv_standalone::SetRunState(1);
    ASSERT_TRUE(waits.Tick());
    EXPECT_FALSE(probe->Exit());
    Put("NT_TCA", "b");
    qv_standalone::SetRunState(2);
    ASSERT_TRUE(waits.Tick(1));
    EXPECT_TRUE(probe->Exit());
    qv_standalone::SetRunState(0);
    ASSERT_TRUE(waits.Tick(1));
    EXPECT_EQ(0, manager->wait());
    EXPECT_EQ((Texts{"a"}), SentNames());
    EXPECT_EQ((Texts{"b"}), NamesOf(probe->Buffer()));
}

TEST_F(SupplierThread, AnExitDuringADrainLetsTheDrainEnd) {
    EnterService();
    Open();
    Put("NT_TCA", "a");
    Put("NT_TCA", "b");
    script().On("push_structured_event", [&](int) { probe->Exit() = true; });
    ASSERT_TRUE(waits.Tick());
    EXPECT_EQ((Texts{"a", "b"}), SentNames());
    EXPECT_EQ(2u, manager->thr_count());
    ASSERT_TRUE(waits.Tick(1));
    ASSERT_TRUE(waits.Tick(1));
    EXPECT_EQ(0, manager->wait());
}

}  // namespace
}  // namespace qv_test
