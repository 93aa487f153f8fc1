// NotifyServiceInit, ConnectChannel and the types.
#include <filesystem>

#include "tests/unit/notification/supplier_fixture.h"

namespace qv_test {
namespace {

constexpr char kSource[] = "channel_connection";
constexpr char kCleared[] =
    "[SuppilerMgr::NotifyServiceInit] CORBA Notification Service: Event Loss Cleared!";
constexpr char kConnectFailed[] = "[SuppilerMgr::NotifyServiceInit] ConnectChannel failed!";

class ChannelConnection : public SupplierTest {
  protected:
    explicit ChannelConnection(const char* persistent = "0")
        : SupplierTest({{"PersistenceEventChannel", persistent}, {"bSingleThreadPushEvent", "1"}}) {}

    int Init() { return manager->NotifyServiceInit(); }
    /// Fails unless an init fails, and leaves the channel out of service and the lock free.
    void ExpectFailedInit() {
        probe->Broken() = false;
        probe->WasBroken() = false;
        probe->RestoreCount() = 2;
        Forget();
        EXPECT_EQ(-1, Init());
        EXPECT_EQ("out of service", State());
        EXPECT_EQ(2, probe->RestoreCount());
        EXPECT_FALSE(BufferIsLocked());
        EXPECT_TRUE(callback.Seen().empty());
    }
};

const std::set<std::string> kAllTypes = {"NT_ALARM",
                                         "NT_TCA",
                                         "NT_OBJECT_CREATION",
                                         "NT_OBJECT_DELETION",
                                         "NT_ATTRIBUTE_VALUE_CHANGE",
                                         "NT_STATE_CHANGE",
                                         "NT_ROUTE_CHANGE",
                                         "NT_PROTECTION_SWITCH",
                                         "NT_FILE_TRANSFER_STATUS",
                                         "NT_PULL_FILE_TRANSFER_STATUS",
                                         "NT_EPROTECTION_SWITCH",
                                         "NT_IPPROTECTION_SWITCH",
                                         "NT_ASON_RESOURCE_CHANGE",
                                         "NT_PRBSTEST_STATUS",
                                         "NT_WDMPROTECTION_SWITCH",
                                         "NT_ATMPROTECTION_SWITCH",
                                         "NT_RPRPROTECTION_SWITCH",
                                         "NT_HEARTBEAT",
                                         "NT_PERFORMANCE_TASK_CHANGE",
                                         "NT_QUERYHISTORYALARMS_STATUS",
                                         "NT_ALARM_UPDATED",
                                         "NT_OAM_ETHSVR_LB_REPORT",
                                         "NT_OAM_ETHSVR_LB_STATISTIC_REPORT",
                                         "NT_OAM_ETHSVR_LT_REPORT",
                                         "NT_OAM_LSP_LB_REPORT",
                                         "NT_OAM_LSP_LT_REPORT",
                                         "NT_OAM_LSP_TEST_REPORT",
                                         "NT_OAM_PW_LB_REPORT",
                                         "NT_OAM_PW_LT_REPORT",
                                         "NT_OAM_PW_TEST_REPORT",
                                         "NT_TNP_SWITCH",
                                         "NT_ALARM_ACKNOWLEDGE",
                                         "NT_LOGIN",
                                         "NT_LOGOUT"};

const std::vector<std::string> kOffered = {"NT_ALARM",
                                           "NT_TCA",
                                           "NT_OBJECT_CREATION",
                                           "NT_OBJECT_DELETION",
                                           "NT_ATTRIBUTE_VALUE_CHANGE",
                                           "NT_STATE_CHANGE",
                                           "NT_ROUTE_CHANGE",
                                           "NT_PROTECTION_SWITCH",
                                           "NT_FILE_TRANSFER_STATUS",
                                           "NT_EPROTECTION_SWITCH",
                                           "NT_HEARTBEAT",
                                           "NT_ASON_RESOURCE_CHANGE",
                                           "NT_PRBSTEST_STATUS",
                                           "NT_WDMPROTECTION_SWITCH",
                                           "NT_ATMPROTECTION_SWITCH",
                                           "NT_RPRPROTECTION_SWITCH",
                                           "NT_ALARM_UPDATED",
                                           "NT_PULL_FILE_TRANSFER_STATUS",
                                           "NT_QUERYHISTORYALARMS_STATUS",
                                           "NT_ALARM_ACKNOWLEDGE"};

TEST_F(ChannelConnection, AnInitMakesConnectsAndOffers) {
    EXPECT_EQ(0, Init());
    EXPECT_EQ((Texts{"create_channel", "default_supplier_admin", "obtain_notification_push_consumer",
                     "connect_structured_push_supplier", "offer_change"}),
              script().Calls());
    EXPECT_EQ("settling", State());
    EXPECT_EQ(3, probe->RestoreCount());
    EXPECT_EQ((Texts{"cleared"}), callback.Seen());
    EXPECT_NE("", callback.Times()[0]);
    ExpectTraces(kSource, {kCleared});
    ExpectDebug(kSource, 3,
                "[SuppilerMgr::ConnectChannel]: Get new proxy push consumer(proxy id = " +
                    std::to_string(service->Proxies().at(0)) + ")!");
    const CosNotifyComm::StructuredPushSupplier_var supplier = service->Supplier(service->Proxies()[0]);
    EXPECT_FALSE(CORBA::is_nil(supplier.in()));
    EXPECT_FALSE(BufferIsLocked());
}

TEST_F(ChannelConnection, RegistersAllTypesAndOffersSomeInTheirOrder) {
    EXPECT_EQ(34u, kAllTypes.size());
    EXPECT_EQ(0, Init());
    EXPECT_EQ(kAllTypes, probe->Types());
    ASSERT_EQ(1u, service->Offers().size());
    EXPECT_EQ("admin", service->Offers()[0].target);
    EXPECT_TRUE(service->Offers()[0].removed.empty());
    FakeOffer::Types expected;
    for (const std::string& type : kOffered) {
        expected.emplace_back("tmf_mtnm", type);
    }
    EXPECT_EQ(20u, expected.size());
    EXPECT_EQ(expected, service->Offers()[0].added);
}

TEST_F(ChannelConnection, EveryRegisteredTypeIsPushed) {
    EnterService();
    for (const std::string& type : kAllTypes) {
        StructuredEvent event = MakeEvent(type, type, 5);
        EXPECT_EQ(0, manager->PushEvent(event)) << type;
    }
    EXPECT_EQ((Texts{kAllTypes.begin(), kAllTypes.end()}), NamesOf(service->Events()));
}

TEST_F(ChannelConnection, AnInitForgetsTypesOfTheBundlesOwn) {
    EXPECT_EQ(0, Init());
    manager->regist("NT_OWN");
    manager->unRegist("NT_TCA");
    EXPECT_EQ(0, Init());
    EXPECT_EQ(kAllTypes, probe->Types());
}

TEST_F(ChannelConnection, ATransientChannelIsMadeAnewAtEachInit) {
    EXPECT_EQ(0, Init());
    EXPECT_EQ(0, Init());
    ASSERT_EQ(2u, service->Channels().size());
    EXPECT_FALSE(service->Channels()[0].alive);
    EXPECT_EQ(2u, service->Proxies().size());
    EXPECT_EQ(0, script().Count("push_consumers"));
    StructuredEvent event = MakeEvent("NT_TCA");
    EXPECT_EQ(0, manager->PushEvent(event));
    EXPECT_EQ(1u, service->Events().size());
}

TEST_F(ChannelConnection, HoldsTheLockThroughItsCallsAndCountsAsBrokenMeanwhile) {
    EnterService();
    bool locked = true;
    std::string states;
    const auto look = [&](int) {
        locked = locked && BufferIsLocked();
        states += State() + ";";
    };
    for (const char* operation : {"destroy", "create_channel", "offer_change"}) {
        script().On(operation, look);
    }
    EXPECT_EQ(0, Init());
    EXPECT_TRUE(locked);
    EXPECT_EQ("out of service;out of service;out of service;", states);
}

TEST_F(ChannelConnection, GoesOnWhenThereIsNoChannelToBeHad) {
    script().Raise<CORBA::NO_RESOURCES>("create_channel");
    ExpectFailedInit();
    ExpectTraced(kSource,
                 "[SuppilerMgr::NotifyServiceInit] CORBA Notification Service: Notification Service Init "
                 "Failed!");
    EXPECT_EQ(kAllTypes, probe->Types());
}

TEST_F(ChannelConnection, ANilAdminFails) {
    script().ReturnNil("default_supplier_admin");
    ExpectFailedInit();
    ExpectTraces(kSource,
                 {"[SuppilerMgr::ConnectChannel] SupplierAdmin or ConsumerAdmin is null!", kConnectFailed});
    const CosNotifyChannelAdmin::EventChannel_var channel = manager->getChannel();
    EXPECT_FALSE(CORBA::is_nil(channel.in()));
}

TEST_F(ChannelConnection, ANilProxyFails) {
    script().ReturnNil("obtain_notification_push_consumer");
    ExpectFailedInit();
    ExpectTraces(kSource, {"[SuppilerMgr::ConnectChannel] CosNotifyChannelAdmin::ProxyConsumer is null!",
                           kConnectFailed});
}

TEST_F(ChannelConnection, AProxyOfAnotherKindFails) {
    service->MakeGeneralProxies();
    ExpectFailedInit();
    EXPECT_EQ(1u, service->Proxies().size());
    EXPECT_EQ(0, script().Count("connect_structured_push_supplier"));
    ExpectTraced("supplier_impl", "[SuppilerImpl::connect] Proxy object is nil!");
    ExpectTraced(kSource, kConnectFailed);
    EXPECT_EQ((Texts{"[SuppilerImpl::connect] Proxy object is nil!", kConnectFailed}), Traces());
    EXPECT_TRUE(CORBA::is_nil(probe->Proxy().in()));
}

/// A servant whose connection raises what no proxy may raise.
class PickySupplier : public NS_CORBA::SuppilerImpl {
  public:
    int connect(CosNotifyChannelAdmin::StructuredProxyPushConsumer_ptr) override {
        throw CosNotifyComm::InvalidEventType();
    }
};

TEST_F(ChannelConnection, AnInvalidEventTypeFails) {
    EnterService();
    PickySupplier supplier;
    const CosNotifyChannelAdmin::EventChannel_var channel = manager->getChannel();
    EXPECT_EQ(-1, manager->ConnectChannel(&supplier, channel.in()));
    ExpectTraces(kSource,
                 {"[SuppilerMgr::ConnectChannel] CosNotifyComm::InvalidEventType exception raised!"});
}

TEST_F(ChannelConnection, AnyOtherExceptionFails) {
    for (const char* operation : {"default_supplier_admin", "obtain_notification_push_consumer"}) {
        script().Raise<CORBA::TRANSIENT>(operation);
        ExpectFailedInit();
        ExpectException(kSource, "[SuppilerMgr::ConnectChannel] Exception raised!");
        ExpectTraced(kSource, kConnectFailed);
        script().On(operation, {});
    }
}

TEST_F(ChannelConnection, AConnectionThatFailsFails) {
    script().Raise<CORBA::TRANSIENT>("connect_structured_push_supplier");
    ExpectFailedInit();
    ExpectTraces(kSource, {kConnectFailed});
    ExpectException("supplier_impl",
                    "[SuppilerImpl::connect] Exception occurred during connect push supplier!");
}

TEST_F(ChannelConnection, WithoutAnAdminNothingIsOffered) {
    script().On("connect_structured_push_supplier",
                [this](int) { probe->Admin() = CosNotifyChannelAdmin::SupplierAdmin::_nil(); });
    ExpectFailedInit();
    ExpectTraces(kSource, {"[SuppilerMgr::NotifyServiceInit] SupplierAdmin is null!"});
    EXPECT_EQ(0, script().Count("offer_change"));
}

TEST_F(ChannelConnection, AnOfferThatFailsLeavesTheServantConnected) {
    script().Raise<CosNotifyComm::InvalidEventType>("offer_change");
    ExpectFailedInit();
    ExpectException(kSource, "[SuppilerMgr::NotifyServiceInit] Exception raised during offer_change!");
    EXPECT_TRUE(Traces().empty());
    const CosNotifyComm::StructuredPushSupplier_var supplier = service->Supplier(service->Proxies().at(0));
    EXPECT_FALSE(CORBA::is_nil(supplier.in()));
    EXPECT_EQ(0, probe->Servant()->do_push(MakeEvent("NT_TCA")));
}

TEST_F(ChannelConnection, NothingConnectsWithoutChannelOrSupplier) {
    EnterService();
    const CosNotifyChannelAdmin::EventChannel_var channel = manager->getChannel();
    EXPECT_EQ(-1, manager->ConnectChannel(nullptr, channel.in()));
    EXPECT_EQ(-1, manager->ConnectChannel(probe->Servant(), CosNotifyChannelAdmin::EventChannel::_nil()));
    const char* const text = "[SuppilerMgr::ConnectChannel] Channel or supplier is null!";
    ExpectTraces(kSource, {text, text});
    EXPECT_TRUE(script().Calls().empty());
}

TEST_F(ChannelConnection, WithoutAServantAnInitFails) {
    NS_CORBA::RefCount<NS_CORBA::SuppilerImpl>* const servant = probe->Servant();
    probe->Servant() = nullptr;
    ExpectFailedInit();
    ExpectTraces(kSource, {"[SuppilerMgr::ConnectChannel] Channel or supplier is null!", kConnectFailed});
    probe->Servant() = servant;
}

/// Channels that outlive the agent: the library writes channel.ior into the working directory.
class PersistentChannelConnection : public ChannelConnection {
  protected:
    PersistentChannelConnection() : ChannelConnection("1") { std::filesystem::current_path(m_dir.path()); }
    ~PersistentChannelConnection() override { std::filesystem::current_path(m_former); }

  private:
    const std::filesystem::path m_former = std::filesystem::current_path();
};

TEST_F(PersistentChannelConnection, ASecondInitTakesTheFormerChannelAndProxy) {
    EXPECT_EQ(0, Init());
    const CosNotifyChannelAdmin::ProxyID proxy = service->Proxies().at(0);
    ExpectDebug(kSource, 3,
                "[SuppilerMgr::ConnectChannel]: Get new proxy push consumer(proxy id = " +
                    std::to_string(proxy) + ")!");
    Forget();
    EXPECT_EQ(0, Init());
    EXPECT_EQ("settling", State());
    EXPECT_EQ(1u, service->Channels().size());
    EXPECT_EQ(1u, service->Proxies().size());
    ExpectDebug(kSource, 3,
                "[SuppilerMgr::ConnectChannel]: Connect exsit proxy push consumer(proxy id = " +
                    std::to_string(proxy) + ")!");
    ExpectTraced("supplier_impl",
                 "[SuppilerImpl::connect] CORBA Notification Service: Already connected structured push "
                 "supplier!");
    EXPECT_EQ(0, script().Count("obtain_notification_push_consumer"));
    EXPECT_EQ((Texts{"cleared"}), callback.Seen());
    StructuredEvent event = MakeEvent("NT_TCA");
    EXPECT_EQ(0, manager->PushEvent(event));
}

TEST_F(PersistentChannelConnection, ANilListOfProxiesMeansANewOne) {
    script().ReturnNil("push_consumers");
    EXPECT_EQ(0, Init());
    EXPECT_EQ(1, script().Count("obtain_notification_push_consumer"));
}

TEST_F(PersistentChannelConnection, AFormerProxyThatIsNilFails) {
    EXPECT_EQ(0, Init());
    script().ReturnNil("get_proxy_consumer");
    ExpectFailedInit();
    ExpectTraces(kSource, {"[SuppilerMgr::ConnectChannel] CosNotifyChannelAdmin::ProxyConsumer is null!",
                           kConnectFailed});
    EXPECT_EQ(0, script().Count("obtain_notification_push_consumer"));
}

}  // namespace
}  // namespace qv_test
