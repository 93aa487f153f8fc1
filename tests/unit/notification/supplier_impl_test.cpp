// The servant, and the handles that are asked before it pushes.
#include "notification/supplier_impl.h"

#include <atomic>
#include <thread>

#include "tests/support/vtable_place.h"
#include "tests/unit/agent/fake_orb.h"
#include "tests/unit/notification/supplier_fixture.h"

namespace qv_test {
namespace {

using CosNotifyChannelAdmin::StructuredProxyPushConsumer;
using CosNotifyChannelAdmin::StructuredProxyPushConsumer_var;

constexpr char kSource[] = "supplier_impl";

class Servant : public SupplierTest {
  protected:
    ~Servant() override { NS_CORBA::g_mapEventCustomizeHandle.clear(); }

    NS_CORBA::SuppilerImpl& servant() { return *probe->Servant(); }

    /// A fresh proxy of a channel of the fake service.
    StructuredProxyPushConsumer_var MakeProxy() {
        const CosNotifyChannelAdmin::EventChannel_var channel = service->AddChannel();
        const CosNotifyChannelAdmin::SupplierAdmin_var admin = channel->default_supplier_admin();
        CosNotifyChannelAdmin::ProxyID id = 0;
        const CosNotifyChannelAdmin::ProxyConsumer_var proxy =
            admin->obtain_notification_push_consumer(CosNotifyChannelAdmin::STRUCTURED_EVENT, id);
        return StructuredProxyPushConsumer::_narrow(proxy.in());
    }
};

/// Lets events go on or not, and notes them.
class Handle : public NS_CORBA::EventCustomizeHandle {
  public:
    explicit Handle(bool pass) : m_pass(pass) {}
    bool CustomizeEvent(const StructuredEvent& event) override {
        names.push_back(NameOf(event));
        if (raise) {
            throw CORBA::BAD_PARAM();
        }
        return m_pass;
    }
    std::vector<std::string> names;
    bool raise = false;

  private:
    const bool m_pass;
};

TEST_F(Servant, BeginsWithoutProxyAndPoa) {
    NS_CORBA::SuppilerImpl fresh;
    EXPECT_TRUE(CORBA::is_nil(PortableServer::POA_var(fresh._default_POA()).in()));
    EXPECT_EQ(-1, fresh.do_push(MakeEvent("NT_TCA")));
    ExpectTraces(kSource, {"[SuppilerImpl::do_push] Proxy object is nil!"});
    fresh.disconnect();
    EXPECT_EQ(1u, Traces().size());
}

TEST_F(Servant, ConnectsWithItsOwnReference) {
    const StructuredProxyPushConsumer_var proxy = MakeProxy();
    EXPECT_EQ(0, servant().connect(proxy.in()));
    EXPECT_TRUE(proxy->_is_equivalent(probe->Proxy().in()));
    const CosNotifyComm::StructuredPushSupplier_var supplier = service->Supplier(service->Proxies().at(0));
    ASSERT_FALSE(CORBA::is_nil(supplier.in()));
    const CosNotification::EventTypeSeq none;
    supplier->subscription_change(none, none);
    EXPECT_TRUE(m_log->Entries(kSys).empty());
}

TEST_F(Servant, DoesNotConnectToNil) {
    EXPECT_EQ(-1, servant().connect(StructuredProxyPushConsumer::_nil()));
    ExpectTraces(kSource, {"[SuppilerImpl::connect] Proxy object is nil!"});
}

TEST_F(Servant, AProxyThatIsConnectedAlreadyIsASuccess) {
    const StructuredProxyPushConsumer_var proxy = MakeProxy();
    EXPECT_EQ(0, servant().connect(proxy.in()));
    EXPECT_EQ(0, servant().connect(proxy.in()));
    ExpectTraces(kSource,
                 {"[SuppilerImpl::connect] CORBA Notification Service: Already connected structured push "
                  "supplier!"});
}

TEST_F(Servant, AConnectionThatFailsKeepsTheNewProxyAndLeavesTheOldOneConnected) {
    const StructuredProxyPushConsumer_var first = MakeProxy();
    const StructuredProxyPushConsumer_var second = MakeProxy();
    EXPECT_EQ(0, servant().connect(first.in()));
    script().Raise<CORBA::TRANSIENT>("connect_structured_push_supplier");
    EXPECT_EQ(-1, servant().connect(second.in()));
    ExpectException(kSource, "[SuppilerImpl::connect] Exception occurred during connect push supplier!");
    EXPECT_TRUE(second->_is_equivalent(probe->Proxy().in()));
    EXPECT_EQ(0, script().Count("disconnect_structured_push_consumer"));
}

TEST_F(Servant, PushesTheEventAsItIs) {
    EnterService();
    EXPECT_EQ(0, servant().do_push(MakeEvent("NT_UNKNOWN", "a", 0)));
    EXPECT_EQ((Texts{"a"}), NamesOf(service->Events()));
    EXPECT_TRUE(m_log->Entries().empty());
}

TEST_F(Servant, APushIntoADisconnectedProxyFails) {
    EnterService();
    service->Disconnect(service->Proxies().at(0));
    EXPECT_EQ(-1, servant().do_push(MakeEvent("NT_TCA")));
    ExpectTraces(kSource,
                 {"[SuppilerImpl::do_push] CORBA Notification Service: Push event failed due to disconnect "
                  "from channel!"});
}

TEST_F(Servant, AnyOtherExceptionOfAPushFails) {
    EnterService();
    script().Raise<CORBA::IMP_LIMIT>("push_structured_event");
    EXPECT_EQ(-1, servant().do_push(MakeEvent("NT_TCA")));
    ExpectException(kSource, "[SuppilerImpl::do_push] Exception occurred during pushing event!");
    service->Vanish(1);
    EXPECT_EQ(-1, servant().do_push(MakeEvent("NT_TCA")));
    EXPECT_TRUE(Traces().empty());
}

TEST_F(Servant, AHandleMayDiscardTheEventsOfItsType) {
    EnterService();
    Handle handle(false);
    NS_CORBA::g_mapEventCustomizeHandle["NT_TCA"] = &handle;
    StructuredEvent event = MakeEvent("NT_TCA", "a");
    EXPECT_EQ(0, manager->PushEvent(event));
    EXPECT_EQ((Texts{"a"}), handle.names);
    EXPECT_TRUE(service->Events().empty());
    ExpectTraces(kSource, {"[SuppilerImpl::do_push] Fail to customize event,the event is discarded!"});
    EXPECT_EQ(1u, NotifyRecords().size());  // logged as if it were sent
    EXPECT_EQ(0, servant().do_push(MakeEvent("NT_ALARM", "b")));
    EXPECT_EQ((Texts{"b"}), NamesOf(service->Events()));
}

TEST_F(Servant, AHandleMayLetEventsGoOn) {
    EnterService();
    Handle handle(true);
    NS_CORBA::g_mapEventCustomizeHandle["NT_TCA"] = &handle;
    NS_CORBA::g_mapEventCustomizeHandle["NT_ALARM"] = nullptr;
    EXPECT_EQ(0, servant().do_push(MakeEvent("NT_TCA", "a")));
    EXPECT_EQ(0, servant().do_push(MakeEvent("NT_ALARM", "b")));
    EXPECT_EQ((Texts{"a"}), handle.names);
    EXPECT_EQ((Texts{"a", "b"}), NamesOf(service->Events()));
    EXPECT_TRUE(Traces().empty());
}

TEST_F(Servant, AHandleIsAskedBeforeTheProxyIsLookedAt) {
    Handle handle(false);
    NS_CORBA::g_mapEventCustomizeHandle["NT_TCA"] = &handle;
    EXPECT_EQ(0, servant().do_push(MakeEvent("NT_TCA")));
}

TEST_F(Servant, NoCorbaExceptionOfAHandleGetsOut) {
    EnterService();
    Handle handle(true);
    handle.raise = true;
    NS_CORBA::g_mapEventCustomizeHandle["NT_TCA"] = &handle;
    EXPECT_EQ(-1, servant().do_push(MakeEvent("NT_TCA")));
    ExpectException(kSource, "[SuppilerImpl::do_push] Exception occurred during pushing event!");
}

TEST_F(Servant, TheOtherTablesAreThereForTheBundles) {
    int object = 0;
    for (auto* map :
         {&NS_CORBA::g_customizePreMap, &NS_CORBA::g_customizeReplaceMap, &NS_CORBA::g_customizePostMap}) {
        EXPECT_TRUE(map->empty());
        (*map)["x"] = &object;
        map->clear();
    }
    EXPECT_TRUE(NS_CORBA::g_listCustomizeManager.empty());
    EXPECT_TRUE(NS_CORBA::g_mapEventCustomizeHandle.empty());
}

TEST_F(Servant, DisconnectForgetsTheProxy) {
    EnterService();
    servant().disconnect();
    EXPECT_EQ(1, script().Count("disconnect_structured_push_consumer"));
    EXPECT_TRUE(CORBA::is_nil(probe->Proxy().in()));
    servant().disconnect();
    EXPECT_EQ(1, script().Count("disconnect_structured_push_consumer"));
}

TEST_F(Servant, ADisconnectionThatFailsKeepsTheProxy) {
    EnterService();
    script().Raise<CORBA::TRANSIENT>("disconnect_structured_push_consumer");
    servant().disconnect();
    ExpectException(kSource, "Exception during disconnect push consumer failed!");
    EXPECT_FALSE(CORBA::is_nil(probe->Proxy().in()));
}

TEST_F(Servant, TheChannelMayDropIt) {
    EnterService();
    const CosNotifyComm::StructuredPushSupplier_var supplier = service->Supplier(service->Proxies().at(0));
    EXPECT_FALSE(supplier->_non_existent());
    supplier->disconnect_structured_push_supplier();
    EXPECT_TRUE(supplier->_non_existent());
    EXPECT_EQ("in service", State());
    EXPECT_TRUE(m_log->Entries().empty());
}

TEST_F(Servant, OutsideARequestADisconnectionIsLogged) {
    servant().disconnect_structured_push_supplier();
    ExpectException(kSource,
                    "[SuppilerImpl::disconnect_structured_push_supplier] Exception raised during "
                    "disconnecting supplier!");
}

TEST_F(Servant, WithoutAnOrbADisconnectionDoesNothing) {
    config().SetOrb(CORBA::ORB::_nil());
    servant().disconnect_structured_push_supplier();
    EXPECT_TRUE(m_log->Entries().empty());
    config().SetOrb(orb.in());
}

TEST_F(Servant, WithoutAPoaCurrentADisconnectionDoesNothing) {
    const CORBA::ORB_var withoutCurrent = new FakeOrb;
    config().SetOrb(withoutCurrent.in());
    servant().disconnect_structured_push_supplier();
    EXPECT_TRUE(m_log->Entries().empty());
    config().SetOrb(orb.in());
}

TEST_F(Servant, APushGoesOnWhileTheProxyIsReplaced) {
    EnterService();
    const StructuredProxyPushConsumer_var first = MakeProxy();
    const StructuredProxyPushConsumer_var second = MakeProxy();
    EXPECT_EQ(0, servant().connect(first.in()));
    EXPECT_EQ(0, servant().connect(second.in()));
    std::atomic<bool> stop{false};
    std::thread pusher([&] {
        while (!stop) {
            EXPECT_EQ(0, servant().do_push(MakeEvent("NT_TCA")));
        }
    });
    for (int i = 0; i < 500; ++i) {
        EXPECT_EQ(0, servant().connect(i % 2 == 0 ? first.in() : second.in()));
    }
    stop = true;
    pusher.join();
}

TEST(BundlesInterfaces, OperationsStandInTheirOrder) {
    EXPECT_EQ(VtablePlace(&NS_CORBA::EventCustomizeHandle::CustomizeEvent), 0);
    EXPECT_EQ(VtablePlace(&NS_CORBA::CallBackObj::EventLossCleared), 2);
    EXPECT_EQ(VtablePlace(&NS_CORBA::CallBackObj::EventLossOccurred), 3);
    EXPECT_EQ(VtablePlace(&NS_CORBA::CallBackObj::StructuredEventToStr), 4);
    EXPECT_EQ(VtablePlace(&NS_CORBA::CallBackObj::HeartBeating), 5);
}

}  // namespace
}  // namespace qv_test
