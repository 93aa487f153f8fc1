// Admins and proxies by themselves, without servants.
#include "services/notify/model/admin_node.h"

#include <gmock/gmock.h>

#include "services/notify/model/proxy_node.h"
#include "services/notify/properties/admin_properties.h"
#include "services/notify/properties/qos.h"
#include "tests/unit/notify/channel_fixture.h"
#include "tests/unit/notify/failing_store.h"

namespace {

using namespace qv_notify_test;
using qv_notify::AdminNode;
using qv_notify::ChannelNode;
using qv_notify::ChannelState;
using qv_notify::EventTypeName;
using qv_notify::ProxyData;
using qv_notify::ProxyNode;
using qv_notify::ServiceContext;
using qv_notify::TypeSet;
using qv_test::WaitFor;

std::vector<EventTypeName> ManyTypes(std::size_t count) {
    std::vector<EventTypeName> types;
    for (std::size_t i = 0; i < count; ++i) {
        types.push_back({"tmf", std::to_string(i)});
    }
    return types;
}

class AdminNodeTest : public ChannelTest {
  protected:
    AdminNodeTest() {
        const CORBA::Object_var object = service.Orb()->resolve_initial_references("RootPOA");
        root = PortableServer::POA::_narrow(object.in());
        const PortableServer::POAManager_var manager = root->the_POAManager();
        manager->activate();
        const std::lock_guard<std::mutex> guard(channel->Mutex());
        admin = channel->MakeAdmin(true, true);
        proxy = admin->MakeProxy();
    }
    ~AdminNodeTest() override {
        service.DeliveryPool().Stop();
        service.IntakePool().Stop();
        const std::lock_guard<std::mutex> guard(channel->Mutex());
        channel->Destroy();
        for (const char* name : {"notify_run", "notify"}) {  // the next test's service makes them again
            const PortableServer::POA_var poa = root->find_POA(name, false);
            poa->destroy(true, true);
        }
    }
    static CORBA::ORB_ptr Orb() {
        int argc = 0;
        char* argv[] = {nullptr};
        return CORBA::ORB_init(argc, argv);
    }
    /// To an object that doesn't exist.
    void ConnectToNobody() {
        const CORBA::Object_var peer =
            root->create_reference("IDL:omg.org/CosNotifyComm/StructuredPushConsumer:1.0");
        const CORBA::String_var text = service.Orb()->object_to_string(peer.in());
        const std::lock_guard<std::mutex> guard(channel->Mutex());
        ProxyData data = proxy->Data();
        data.peer = text.in();
        proxy->SetData(std::move(data));
        proxy->ConnectPeer(peer.in());
    }
    bool ProxyThere() {
        const std::lock_guard<std::mutex> guard(channel->Mutex());
        return admin->FindProxy(proxy->Id()) != nullptr;
    }

    FailingStore failing;
    const CORBA::ORB_var orb = Orb();
    ServiceContext service{orb.in(), &failing.store, log, {}};
    const std::shared_ptr<ChannelNode> channel = std::make_shared<ChannelNode>(
        service, ChannelState{1, qv_notify::DefaultQos(), qv_notify::DefaultAdmin()}, true);
    PortableServer::POA_var root;
    std::shared_ptr<AdminNode> admin;
    std::shared_ptr<ProxyNode> proxy;
};

TEST_F(AdminNodeTest, AConsumerThatIsGoneCollectsNothingAlsoWhileItsProxyCannotBeForgotten) {
    failing.FailToDeleteFrom("objects");
    ConnectToNobody();
    const qv_notify::PropertyValues qos = qv_notify::DefaultQos();
    channel->Traffic().Accept(BodyOf("A", 1), "c1/sa0/p1", qos);
    ASSERT_TRUE(WaitFor([&] { return Told("is gone") == 1 && Told("was refused with NO_RESOURCES") >= 1; }));
    for (int number = 2; number <= 20; ++number) {
        channel->Traffic().Accept(BodyOf("A", number), "c1/sa0/p1", qos);
    }
    EXPECT_TRUE(WaitFor([&] { return channel->Traffic().Held().Events() == 0; }));
    EXPECT_TRUE(ProxyThere());
    failing.Mend();
    EXPECT_TRUE(WaitFor([&] { return !ProxyThere(); }));
    EXPECT_EQ(channel->Traffic().Held().Events(), 0U);
}

TEST_F(AdminNodeTest, TooManyTypesAreRefusedBeforeAnythingIsChanged) {
    const std::lock_guard<std::mutex> guard(channel->Mutex());
    admin->ChangeTypes(ManyTypes(TypeSet::kMost), {});
    EXPECT_EQ(proxy->Data().types.Types().size(), TypeSet::kMost);
    EXPECT_THROW(admin->ChangeTypes({{"tmf", "one more"}}, {}), CORBA::IMP_LIMIT);
    EXPECT_THROW(proxy->ChangeTypes({{"tmf", "one more"}}, {}), CORBA::IMP_LIMIT);
    EXPECT_EQ(admin->Data().types.Types().size(), TypeSet::kMost);
    EXPECT_EQ(proxy->Data().types.Types().size(), TypeSet::kMost);

    admin->ChangeTypes({}, {{"tmf", "0"}});
    proxy->ChangeTypes({{"tmf", "another"}}, {});
    EXPECT_THROW(admin->ChangeTypes({{"tmf", "one more"}}, {}), CORBA::IMP_LIMIT);
    EXPECT_EQ(admin->Data().types.Types().size(), TypeSet::kMost - 1) << "its proxy has no room for it";
}

}  // namespace
