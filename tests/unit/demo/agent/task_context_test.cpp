// Calls within this process run on the thread of the test, so that it sees what a request leaves behind.
#include "demo/agent/task_context.h"

#include <gtest/gtest.h>
#include <tao/LocalObject.h>
#include <tao/ORB.h>
#include <tao/ORBInitializer_Registry.h>

#include <functional>
#include <string>

#include "nmsSessionS.h"
#include "platform/thread_context.h"
#include "tests/support/suite_set_up.h"

namespace qv_demo {
namespace {

std::string Interface() {
    return NS_UTIL::ThreadContextMgr::Instance()->GetThreadContext().GetInterfaceName();
}
std::string UserInfo() {
    return NS_UTIL::ThreadContextMgr::Instance()->GetThreadContext().GetUserInfo();
}

/// Begins tasks as the hooks of the library do, behind the interceptor under test.
class Hooks : public virtual PortableInterceptor::ServerRequestInterceptor {
  public:
    char* name() override { return CORBA::string_dup("Hooks"); }
    void destroy() override {}
    void receive_request_service_contexts(PortableInterceptor::ServerRequestInfo*) override {}
    void receive_request(PortableInterceptor::ServerRequestInfo* info) override {
        BeginTask(info, "192.0.2.7:4711");
        if (refuses) {
            throw CORBA::NO_PERMISSION();
        }
    }
    void send_reply(PortableInterceptor::ServerRequestInfo*) override { at_end = Interface(); }
    void send_exception(PortableInterceptor::ServerRequestInfo*) override { at_end = Interface(); }
    void send_other(PortableInterceptor::ServerRequestInfo*) override { at_end = Interface(); }

    static bool refuses;
    static std::string at_end;
};
bool Hooks::refuses = false;
std::string Hooks::at_end;

class HooksInitializer : public virtual PortableInterceptor::ORBInitializer,
                         public virtual CORBA::LocalObject {
  public:
    void pre_init(PortableInterceptor::ORBInitInfo*) override {}
    void post_init(PortableInterceptor::ORBInitInfo* info) override {
        PortableInterceptor::ServerRequestInterceptor_var hooks = new Hooks;
        info->add_server_request_interceptor(hooks.in());
    }
};

class Servant : public POA_nmsSession::NmsSession_I {
  public:
    session::Session_I_ptr associatedSession() override { return session::Session_I::_nil(); }
    void ping() override { work(); }
    void endSession() override {}
    void eventLossOccurred(const char*, const char*) override { inner = Interface(); }
    void eventLossCleared(const char*) override {}

    std::function<void()> work = [] {};
    std::string inner;
};

class TaskContextTest : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        qv_test::SetUpSuite([] {
            RegisterTaskContext();
            PortableInterceptor::ORBInitializer_var hooks = new HooksInitializer;
            PortableInterceptor::register_orb_initializer(hooks.in());
            int argc = 0;
            char* none[] = {nullptr};
            orb = CORBA::ORB_init(argc, none, "task-context-test");
        });
    }
    static void TearDownTestSuite() {
        orb->destroy();
        orb = CORBA::ORB::_nil();
    }

    TaskContextTest() {
        Hooks::refuses = false;
        const CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
        const PortableServer::POA_var root = PortableServer::POA::_narrow(object.in());
        const PortableServer::POAManager_var manager = root->the_POAManager();
        manager->activate();
        const PortableServer::ObjectId_var id = root->activate_object(servant);
        const CORBA::Object_var reference = root->id_to_reference(id.in());
        session = nmsSession::NmsSession_I::_narrow(reference.in());
    }

    static void ExpectNoTask() {
        EXPECT_EQ(Interface(), "");
        EXPECT_EQ(UserInfo(), "");
        EXPECT_EQ(CallerAddress(), "");
    }

    static CORBA::ORB_var orb;
    Servant* const servant = new Servant;
    const PortableServer::ServantBase_var owner{servant};
    nmsSession::NmsSession_I_var session;
};
CORBA::ORB_var TaskContextTest::orb;

TEST_F(TaskContextTest, IsThereInTheServantAndInTheLibrarysLastPointAndGoneAfterwards) {
    std::string interface;
    std::string user_info;
    std::string address;
    servant->work = [&] {
        interface = Interface();
        user_info = UserInfo();
        address = CallerAddress();
    };
    session->ping();
    EXPECT_EQ(interface, "NmsSession_I/ping");
    EXPECT_EQ(user_info, "[(none)][192.0.2.7:4711]");
    EXPECT_EQ(address, "192.0.2.7:4711");
    EXPECT_EQ(Hooks::at_end, "NmsSession_I/ping");
    ExpectNoTask();
}

TEST_F(TaskContextTest, IsGoneAfterAnException) {
    servant->work = [] { throw CORBA::NO_RESOURCES(); };
    EXPECT_THROW(session->ping(), CORBA::NO_RESOURCES);
    EXPECT_EQ(Hooks::at_end, "NmsSession_I/ping");
    ExpectNoTask();
}

TEST_F(TaskContextTest, IsGoneAfterARefusal) {
    Hooks::refuses = true;
    EXPECT_THROW(session->ping(), CORBA::NO_PERMISSION);
    EXPECT_EQ(Hooks::at_end, "NmsSession_I/ping");
    ExpectNoTask();
}

TEST_F(TaskContextTest, OutlastsACallThatTheServantMakesWithinTheProcess) {
    std::string after;
    servant->work = [&] {
        session->eventLossOccurred("", "");
        after = Interface();
        EXPECT_EQ(CallerAddress(), "192.0.2.7:4711");
        EXPECT_EQ(UserInfo(), "[(none)][192.0.2.7:4711]");
    };
    session->ping();
    EXPECT_EQ(servant->inner, "NmsSession_I/eventLossOccurred");
    EXPECT_EQ(after, "NmsSession_I/ping");
    ExpectNoTask();
}

}  // namespace
}  // namespace qv_demo
