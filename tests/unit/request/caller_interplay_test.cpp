// Who calls, seen from all sides in one call: the servant, the bundle's hooks with the access list, and the
// operation log take the same client from the name of its POA.

#include <arpa/inet.h>

#include "tests/support/suite_set_up.h"
#include "tests/unit/request/acl_probe.h"
#include "tests/unit/request/client_tree.h"
#include "tests/unit/request/gate_agent.h"
#include "tests/unit/request/interceptor_fixture.h"

namespace {

constexpr char kKnown[] = "<USERNAME_TAG>anna</USERNAME_TAG><IPANDPORT_TAG>10.0.0.1:4711</IPANDPORT_TAG>";
constexpr char kStranger[] = "<USERNAME_TAG>eve</USERNAME_TAG><IPANDPORT_TAG>10.0.0.2:4712</IPANDPORT_TAG>";

/// Hooks as a bundle writes them: a caller whose address isn't on the list is turned away.
class AccessHooks : public NS_CORBA::RequestInterceptorBase {
  public:
    std::string caller;

    void BeforeReceiveRequest(PortableInterceptor::ServerRequestInfo*) override {
        caller = NS_CORBA::TEUserHelper::GetNmsIPAddrByContext();
        const std::string tag = "<IPANDPORT_TAG>";
        const std::size_t begin = caller.find(tag) + tag.size();
        const std::string address = caller.substr(begin, caller.find(':', begin) - begin);
        in_addr ip{};
        if (inet_pton(AF_INET, address.c_str(), &ip) != 1 ||
            !qv_test::GateAgent::Config().IsValidOssIP(ntohl(ip.s_addr))) {
            throw CORBA::NO_PERMISSION(1, CORBA::COMPLETED_NO);
        }
    }
    void AfterReceiveRequest(PortableInterceptor::ServerRequestInfo*) override {}
};

/// What all tests of this program share: an ORB takes the interceptor only once.
struct Shared {
    Shared() {
        qv_test::SetAgentItems(config, false);
        config.Set("bLogOperation", "1");
        NS_CORBA::CorbaLogMgr::Instance()->Init();
        agent = std::make_unique<qv_test::GateAgent>();
    }
    ~Shared() {
        agent.reset();
        NS_CORBA::CorbaLogMgr::Destroy();
    }

    qv_test::ScopedLogCapture capture;
    qv_test::ScopedConfigItems config;
    qv_test::AclClock clock;
    std::unique_ptr<qv_test::GateAgent> agent;
};

class CallerInterplayTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        qv_test::SetUpSuite([] { s_shared = std::make_unique<Shared>(); });
    }
    static void TearDownTestSuite() { s_shared.reset(); }

    void SetUp() override {
        Allow({"10.0.0.1"});
        qv_test::GateAgent::Config().SetReqInterceptorImpl(&hooks);
        s_shared->capture->Clear();
    }
    void TearDown() override { qv_test::GateAgent::Config().SetReqInterceptorImpl(nullptr); }

    /// Sets the access list, and the clock to when it is in force.
    static void Allow(const std::vector<std::string>& addresses) {
        s_shared->config.SetIPAddresses(addresses);
        s_shared->clock.Advance(31);
    }

    /// Calls an object in the session of `client`: what the servant was told of its caller.
    static std::string CallInSession(const char* client) {
        PortableServer::POA_var poa = qv_test::GateAgent::Config().GetRootPoa();
        const PortableServer::POAManager_var manager = poa->the_POAManager();
        for (const char* name : {"M4400", client, "session"}) {
            try {
                poa = poa->find_POA(name, false);
            } catch (const PortableServer::POA::AdapterNonExistent&) {
                poa = poa->create_POA(name, manager.in(), CORBA::PolicyList());
            }
        }
        qv_test::CallerServant servant;
        return qv_test::ActiveCaller(poa.in(), servant).Call();
    }

    static std::vector<std::string> Records() {
        std::vector<std::string> heads;
        for (const qv_test::LogEntry& entry : s_shared->capture->Entries("corbaoper")) {
            heads.push_back(entry.text.substr(0, entry.text.find('\n')));
        }
        return heads;
    }

    AccessHooks hooks;
    static inline std::unique_ptr<Shared> s_shared;
};

TEST_F(CallerInterplayTest, AllSidesSeeTheSameClient) {
    EXPECT_EQ(CallInSession(kKnown), kKnown);
    EXPECT_EQ(hooks.caller, kKnown);
    EXPECT_EQ(Records(),
              (std::vector<std::string>{std::string("---MessageType:  REQUEST, RemoteAddress:  ") + kKnown,
                                        std::string("---MessageType:  REPLY, RemoteAddress:  ") + kKnown}));
}

TEST_F(CallerInterplayTest, AClientThatIsNotListedIsTurnedAway) {
    try {
        CallInSession(kStranger);
        FAIL() << "let in";
    } catch (const CORBA::NO_PERMISSION& ex) {
        EXPECT_EQ(ex.minor(), 1u);
    }
    EXPECT_EQ(hooks.caller, kStranger);
}

TEST_F(CallerInterplayTest, AChangeOfTheListTakesEffectForTheNextCall) {
    EXPECT_THROW(CallInSession(kStranger), CORBA::NO_PERMISSION);
    Allow({"10.0.0.2"});
    EXPECT_EQ(CallInSession(kStranger), kStranger);
    EXPECT_THROW(CallInSession(kKnown), CORBA::NO_PERMISSION);
    Allow({});
    EXPECT_EQ(CallInSession(kKnown), kKnown);
}

}  // namespace
