// check_channel_valid, the reports to the callback object, and all states of a channel.
#include <stdexcept>

#include "tests/support/free_port.h"
#include "tests/unit/notification/supplier_fixture.h"

namespace qv_test {
namespace {

constexpr char kSource[] = "channel_supervision";
constexpr char kGone[] =
    "[SuppilerMgr::check_channel_valid] EventChannel object not exist, System will create new one!";
constexpr char kRestored[] =
    "[SuppilerMgr::check_channel_valid] EventChannel self-restored, Event loss status cleared!";
constexpr char kCheckFailed[] = "[SuppilerMgr::check_channel_valid] Check EventChannel failed!";
constexpr char kOutOfDate[] = "[EventMgr::Init] Destroy out of date EventChannel at first!";
constexpr char kInitCleared[] =
    "[SuppilerMgr::NotifyServiceInit] CORBA Notification Service: Event Loss Cleared!";

class ChannelSupervision : public SupplierTest {
  protected:
    ChannelSupervision() : SupplierTest({{"bSingleThreadPushEvent", "1"}}) {}

    void Check() { EXPECT_EQ(0, manager->check_channel_valid()); }
    void SetState(bool broken, bool wasBroken) {
        probe->Broken() = broken;
        probe->WasBroken() = wasBroken;
    }
    int Push(const char* type = "NT_TCA") {
        StructuredEvent event = MakeEvent(type);
        return manager->PushEvent(event);
    }
    /// A channel whose service can't be reached: nothing listens there.
    void MakeChannelUnreachable() {
        const std::string where = "corbaloc:iiop:127.0.0.1:" + std::to_string(FreePort()) + "/channel";
        const CORBA::Object_var object = orb->string_to_object(where.c_str());
        probe->Channel() = CosNotifyChannelAdmin::EventChannel::_unchecked_narrow(object.in());
    }
    void LeaveTheServiceUnreachable() { Probe::NtIorFile()[0] = '\0'; }
};

TEST_F(ChannelSupervision, AChannelInServiceGetsItsHeartbeat) {
    EnterService();
    probe->RestoreCount() = 1;
    Check();
    EXPECT_EQ((Texts{"heartbeat"}), callback.Seen());
    EXPECT_EQ(3, probe->RestoreCount());
    EXPECT_EQ("in service", State());
    EXPECT_TRUE(m_log->Entries().empty());
}

TEST_F(ChannelSupervision, ThreeGoodChecksBringABrokenChannelBack) {
    EnterService();
    LeaveService();
    Check();
    EXPECT_EQ(2, probe->RestoreCount());
    Check();
    EXPECT_EQ(1, probe->RestoreCount());
    EXPECT_EQ("out of service", State());
    EXPECT_TRUE(callback.Seen().empty());
    EXPECT_TRUE(m_log->Entries().empty());
    Check();
    EXPECT_EQ(3, probe->RestoreCount());
    EXPECT_EQ("settling", State());
    EXPECT_EQ((Texts{"cleared"}), callback.Seen());
    EXPECT_NE("", callback.Times()[0]);
    ExpectTraces(kSource, {kRestored});
    Check();
    EXPECT_EQ((Texts{"cleared", "heartbeat"}), callback.Seen());
    EXPECT_TRUE(script().Calls().empty());
}

TEST_F(ChannelSupervision, AChannelThatJustFailedIsInServiceAtOnceAfterThreeGoodChecks) {
    EnterService();
    SetState(true, false);
    Check();
    EXPECT_EQ("just failed", State());
    Check();
    Check();
    EXPECT_EQ("in service", State());
}

TEST_F(ChannelSupervision, ACheckThatFailsNeitherCountsNorResets) {
    EnterService();
    LeaveService();
    Check();
    const CosNotifyChannelAdmin::EventChannel_var channel = manager->getChannel();
    MakeChannelUnreachable();
    Check();
    EXPECT_EQ(2, probe->RestoreCount());
    ExpectException(kSource, kCheckFailed);
    EXPECT_TRUE(callback.Seen().empty());
    probe->Channel() = CosNotifyChannelAdmin::EventChannel::_duplicate(channel.in());
    Check();
    Check();
    EXPECT_EQ((Texts{"cleared"}), callback.Seen());
}

TEST_F(ChannelSupervision, AnUnreachableServiceDoesNotStopTheHeartbeatOfAChannelInService) {
    for (const bool wasBroken : {false, true}) {
        EnterService();
        SetState(false, wasBroken);
        MakeChannelUnreachable();
        Check();
        EXPECT_EQ((Texts{"heartbeat"}), callback.Seen());
        ExpectException(kSource, kCheckFailed);
        EXPECT_EQ(wasBroken ? "settling" : "in service", State());
    }
}

TEST_F(ChannelSupervision, WithoutAChannelOneIsMade) {
    Check();
    EXPECT_EQ("settling", State());
    EXPECT_EQ((Texts{kGone, kInitCleared}), Traces());
    ExpectTraced(kSource, kGone);
    EXPECT_EQ((Texts{"cleared", "heartbeat"}), callback.Seen());
    EXPECT_EQ(1u, service->Channels().size());
}

// There was no check that could have failed.
TEST_F(ChannelSupervision, WithoutAChannelExceptionsOfTheCallbackPass) {
    callback.onCleared = [] { throw CORBA::BAD_PARAM(); };
    EXPECT_THROW(manager->check_channel_valid(), CORBA::BAD_PARAM);
    EXPECT_EQ((Texts{"cleared"}), callback.Seen());
    ExpectTraces(kSource, {kGone});
    EXPECT_FALSE(m_log->Contains(kDebug, kCheckFailed));
    EXPECT_FALSE(BufferIsLocked());
}

TEST_F(ChannelSupervision, WithoutAChannelAnObjectThatTheCallbackMissesIsNotTheChannel) {
    callback.onCleared = [] { throw CORBA::OBJECT_NOT_EXIST(); };
    EXPECT_THROW(manager->check_channel_valid(), CORBA::OBJECT_NOT_EXIST);
    EXPECT_EQ((Texts{"cleared"}), callback.Seen());
    ExpectTraces(kSource, {kGone});
    EXPECT_EQ(1u, service->Channels().size());
}

TEST_F(ChannelSupervision, AChannelThatIsGoneIsMadeAnew) {
    for (const bool broken : {false, true}) {
        EnterService();
        SetState(broken, broken);
        const CosNotifyChannelAdmin::ChannelID last = service->Channels().back().id;
        service->Vanish(last);
        Forget();
        Check();
        EXPECT_EQ("settling", State());
        EXPECT_EQ(last + 1, service->Channels().back().id);
        ExpectTraced(kSource, kGone);
        EXPECT_EQ((Texts{"cleared", "heartbeat"}), callback.Seen());
        const CosNotifyChannelAdmin::EventChannel_var channel = manager->getChannel();
        EXPECT_TRUE(channel->_is_equivalent(
            CosNotifyChannelAdmin::EventChannel_var(service->Channel(last + 1)).in()));
    }
}

TEST_F(ChannelSupervision, AChannelThatCantBeMadeAnewStaysBrokenWithoutAHeartbeat) {
    EnterService();
    LeaveService();
    Check();
    service->Vanish(1);
    script().Raise<CORBA::NO_RESOURCES>("create_channel");
    Forget();
    Check();
    EXPECT_EQ(2, probe->RestoreCount());
    EXPECT_EQ("out of service", State());
    EXPECT_TRUE(callback.Seen().empty());
    ExpectTraced(kSource, kGone);
    EXPECT_FALSE(m_log->Contains(kSys, kRestored));
}

TEST_F(ChannelSupervision, AServiceThatIsGoneAltogetherBreaksAChannelInService) {
    EnterService();
    service->Vanish(1);
    LeaveTheServiceUnreachable();
    Forget();
    Check();
    EXPECT_EQ("out of service", State());
    EXPECT_TRUE(callback.Seen().empty());
}

TEST_F(ChannelSupervision, AHeartbeatMayBePushedFromTheCallback) {
    EnterService();
    callback.onHeartBeat = [this] { EXPECT_EQ(0, Push("NT_HEARTBEAT")); };
    Check();
    EXPECT_EQ(1u, service->Events().size());
}

TEST_F(ChannelSupervision, ACorbaExceptionOfTheHeartbeatIsLoggedAndTheHeartbeatNotRepeated) {
    EnterService();
    callback.onHeartBeat = [] { throw CORBA::BAD_PARAM(); };
    Check();
    EXPECT_EQ((Texts{"heartbeat"}), callback.Seen());
    ExpectException(kSource, kCheckFailed);
}

TEST_F(ChannelSupervision, AnObjectThatTheHeartbeatMissesCountsAsTheChannelAndTheHeartbeatIsNotRepeated) {
    EnterService();
    callback.onHeartBeat = [] { throw CORBA::OBJECT_NOT_EXIST(); };
    Check();
    EXPECT_EQ((Texts{"heartbeat", "cleared"}), callback.Seen());
    EXPECT_EQ((Texts{kGone, kOutOfDate, kInitCleared}), Traces());
    ExpectTraced(kSource, kGone);
    EXPECT_FALSE(m_log->Contains(kDebug, kCheckFailed));
    EXPECT_EQ(2u, service->Channels().size());
    EXPECT_EQ("settling", State());
}

TEST_F(ChannelSupervision, OtherExceptionsOfTheCallbackPass) {
    EnterService();
    callback.onHeartBeat = [] { throw std::runtime_error("bundle"); };
    EXPECT_THROW(manager->check_channel_valid(), std::runtime_error);
}

TEST_F(ChannelSupervision, EventLossClearedComesWithoutTheLockFromACheckAndWithItFromAnInit) {
    EnterService();
    LeaveService();
    probe->RestoreCount() = 1;
    bool locked = true;
    callback.onCleared = [&] { locked = BufferIsLocked(); };
    Check();
    EXPECT_FALSE(locked);
    EXPECT_EQ(0, manager->NotifyServiceInit());
    EXPECT_TRUE(locked);
}

TEST_F(ChannelSupervision, PushersMoveTheState) {
    EnterService();
    SetState(false, true);
    Push();
    EXPECT_EQ("in service", State());

    script().Raise<CORBA::TRANSIENT>("push_structured_event");
    Push();
    EXPECT_EQ("just failed", State());
    Push();
    EXPECT_EQ("out of service", State());
    Push();
    EXPECT_EQ("out of service", State());
}

TEST_F(ChannelSupervision, AnInitMovesEveryStateToSettlingOrOutOfService) {
    EnterService();
    for (const bool broken : {true, false}) {
        for (const bool wasBroken : {true, false}) {
            SetState(broken, wasBroken);
            probe->RestoreCount() = 1;
            EXPECT_EQ(0, manager->NotifyServiceInit());
            EXPECT_EQ("settling", State());
            EXPECT_EQ(3, probe->RestoreCount());
        }
    }
    script().Raise<CORBA::NO_RESOURCES>("create_channel");
    for (const bool broken : {true, false}) {
        for (const bool wasBroken : {true, false}) {
            SetState(broken, wasBroken);
            probe->RestoreCount() = 1;
            EXPECT_EQ(-1, manager->NotifyServiceInit());
            EXPECT_EQ("out of service", State());
            EXPECT_EQ(1, probe->RestoreCount());
        }
    }
}

TEST_F(ChannelSupervision, ALossOfTheBundlesOwnGetsAFreshId) {
    std::string before;
    NS_CORBA::GetNotificationID(before);
    manager->NotifyEventLossOccurred();
    EXPECT_EQ((Texts{"loss"}), callback.Seen());
    EXPECT_NE("", callback.Times()[0]);
    EXPECT_EQ(before.substr(0, 10), callback.LostIds()[0].substr(0, 10));
    EXPECT_EQ(std::stoul(before.substr(10)) + 1, std::stoul(callback.LostIds()[0].substr(10)));
}

TEST_F(ChannelSupervision, TheFreeFunctionReportsToTheInstance) {
    SuppilerMgr* const former = SuppilerMgr::m_pInstance;
    SuppilerMgr::m_pInstance = manager.get();
    NS_CORBA::NotifyEventLossOccurred();
    SuppilerMgr::m_pInstance = former;
    EXPECT_EQ((Texts{"loss"}), callback.Seen());
}

TEST_F(ChannelSupervision, ReportsGoToTheCallbackObject) {
    manager->EventLossOccurred("t1", "id");
    manager->EventLossCleared("t2");
    manager->HeartBeating();
    callback.alarmText = "text";
    std::stringstream out;
    out << "head ";
    manager->StructuredEventToStr(out, MakeEvent("NT_ALARM"));
    EXPECT_EQ((Texts{"loss", "cleared", "heartbeat", "text"}), callback.Seen());
    EXPECT_EQ((Texts{"t1", "t2", "", ""}), callback.Times());
    EXPECT_EQ((Texts{"id"}), callback.LostIds());
    EXPECT_EQ("head text", out.str());
    EXPECT_TRUE(m_log->Entries().empty());
}

TEST_F(ChannelSupervision, WithoutACallbackObjectReportsAreTraced) {
    manager->m_pCallBackObj = nullptr;
    manager->EventLossOccurred("t", "id");
    std::stringstream out;
    manager->StructuredEventToStr(out, MakeEvent("NT_ALARM"));
    manager->EventLossCleared("t");
    manager->HeartBeating();
    ExpectTraces(kSource, {"[SuppilerMgr::EventLossOccurred] CallBackObj is null",
                           "[SuppilerMgr::StructuredEventToStr] CallBackObj is null",
                           "[SuppilerMgr::EventLossCleared] CallBackObj is null",
                           "[SuppilerMgr::HeartBeating] CallBackObj is null"});
    EXPECT_EQ("", out.str());
}

}  // namespace
}  // namespace qv_test
