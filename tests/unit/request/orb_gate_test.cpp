// The interceptor in a running ORB: what clients in this process and in another one see, and what is logged
// and counted meanwhile.

#include <sstream>
#include <stdexcept>

#include "tests/support/child_process.h"
#include "tests/support/suite_set_up.h"
#include "tests/support/take_turns.h"
#include "tests/support/wait_for.h"
#include "tests/unit/request/gate_agent.h"
#include "tests/unit/request/interceptor_fixture.h"

namespace {

using NS_CORBA::CorbaLogMgr;
using qv_test::LogEntry;
using Calls = std::vector<std::string>;

/// What all tests of this program share: an ORB takes the interceptor only once.
struct Shared {
    Shared() {
        qv_test::SetAgentItems(config, true);
        config.Set("bLogOperation", "1");
        CorbaLogMgr::Instance()->Init();
        agent = std::make_unique<qv_test::GateAgent>();
    }
    ~Shared() {
        agent.reset();
        CorbaLogMgr::Destroy();
    }

    qv_test::TempDir dir;
    qv_test::ScopedEnv logDir{"QV_LOG_DIR", dir.str()};
    qv_test::ScopedLogCapture capture;
    qv_test::ScopedConfigItems config;
    std::unique_ptr<qv_test::GateAgent> agent;
};

class OrbGateTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        qv_test::SetUpSuite([] { s_shared = std::make_unique<Shared>(); });
    }
    static void TearDownTestSuite() { s_shared.reset(); }

    void SetUp() override {
        Agent().servant.reached = 0;
        s_shared->capture->Clear();
    }
    void TearDown() override {
        s_shared->capture->SetWriteHook({});
        qv_test::GateAgent::Config().SetReqInterceptorImpl(nullptr);
    }

    static qv_test::GateAgent& Agent() { return *s_shared->agent; }
    static qv_test::CapturingLogService& Log() { return s_shared->capture.service(); }

    void PlugIn() { qv_test::GateAgent::Config().SetReqInterceptorImpl(&hooks); }

    /// Calls the object from another process and says how that ended.
    static std::string CallFromOutside(const std::string& operation) {
        qv_test::TakeTurns();
        const qv_test::RunResult result = qv_test::Run({GATE_PEER, "call", Agent().ior, operation});
        qv_test::TakeTurns();
        EXPECT_EQ(result.code, 0) << result.err;
        return result.out.substr(0, result.out.find('\n'));
    }

    /// The operation's count in the statistics file, 0 when it isn't there.
    static unsigned long Count(const std::string& operation) {
        std::istringstream lines(qv_test::ReadFile(s_shared->dir.path() / "CORBAAgentStatisticInfo.dat"));
        std::string name;
        char separator = 0;
        unsigned long count = 0;
        while (lines >> name >> separator >> count) {
            if (name == operation) {
                return count;
            }
        }
        return 0;
    }

    /// Type and operation of each operation record, as "REQUEST ping".
    static Calls Records() {
        Calls records;
        const std::string typeMark = "---MessageType:  ";
        const std::string nameMark = "Operation Name = ";
        for (const LogEntry& entry : Log().Entries("corbaoper")) {
            const std::string& text = entry.text;
            const std::size_t name = text.find(nameMark) + nameMark.size();
            records.push_back(text.substr(typeMark.size(), text.find(',') - typeMark.size()) + " " +
                              text.substr(name, text.find('\n', name) - name));
        }
        return records;
    }

    qv_test::NotingHooks hooks;
    static std::unique_ptr<Shared> s_shared;
};

std::unique_ptr<Shared> OrbGateTest::s_shared;

TEST_F(OrbGateTest, BeforeHooksArePluggedInEveryRemoteRequestIsRefused) {
    for (const char* operation : {"ping", "echo", "fail", "served", "_non_existent"}) {
        EXPECT_EQ(CallFromOutside(operation), "NO_PERMISSION 0 COMPLETED_NO") << operation;
        EXPECT_EQ(Count(operation), 0u) << operation;
    }
    EXPECT_EQ(CallFromOutside("tell"), "NO_PERMISSION 0 COMPLETED_NO");
    EXPECT_EQ(Agent().servant.reached, 0);
    EXPECT_TRUE(Log().Contains("corbadebug", "No Permission, Interceptor is null"));
    EXPECT_GE(Records().size(), 6u);
    for (const std::string& record : Records()) {
        EXPECT_EQ(record.substr(0, 10), "EXCEPTION ") << record;
    }
}

TEST_F(OrbGateTest, BeforeHooksArePluggedInACollocatedRequestIsRefused) {
    try {
        Agent().gate->ping();
        FAIL() << "request was not refused";
    } catch (const CORBA::NO_PERMISSION& refusal) {
        EXPECT_EQ(refusal.minor(), 0u);
        EXPECT_EQ(refusal.completed(), CORBA::COMPLETED_NO);
    }
    EXPECT_EQ(Agent().servant.reached, 0);
    EXPECT_EQ(Records(), Calls{"EXCEPTION ping"});
    const auto refusal = Log().Find("corbadebug", "No Permission");
    ASSERT_TRUE(refusal);
    qv_test::ExpectEntry(*refusal, "corbadebug", 1, "agent_request_interceptor", 168,
                         "[Server_Request_Interceptor::receive_request] No Permission, Interceptor is null");
}

TEST_F(OrbGateTest, AnAcceptedRequestIsLoggedCountedAndServed) {
    PlugIn();
    const unsigned long before = Count("echo");
    EXPECT_EQ(CallFromOutside("echo"), "hello");
    const CORBA::String_var answer = Agent().gate->echo("near");
    EXPECT_STREQ(answer.in(), "near");
    EXPECT_EQ(Count("echo"), before + 2);
    EXPECT_EQ(Records(), (Calls{"REQUEST echo", "REPLY echo", "REQUEST echo", "REPLY echo"}));
    EXPECT_EQ(hooks.calls, (Calls{"before", "after", "before", "after"}));
}

TEST_F(OrbGateTest, AnAttributeIsARequestLikeAnyOther) {
    PlugIn();
    const unsigned long before = Count("_get_served");
    EXPECT_EQ(CallFromOutside("served"), "done");
    EXPECT_EQ(Count("_get_served"), before + 1);
}

TEST_F(OrbGateTest, AFirstHookThatRaisesRejectsTheRequestUncounted) {
    PlugIn();
    hooks.before = [] { throw CORBA::BAD_PARAM(5, CORBA::COMPLETED_NO); };
    const unsigned long before = Count("ping");
    EXPECT_EQ(CallFromOutside("ping"), "BAD_PARAM 5 COMPLETED_NO");
    EXPECT_EQ(Count("ping"), before);
    EXPECT_EQ(Agent().servant.reached, 0);
    EXPECT_EQ(Records(), Calls{"EXCEPTION ping"});
}

TEST_F(OrbGateTest, ASecondHookThatRaisesRejectsTheRequestCounted) {
    PlugIn();
    hooks.after = [] { throw CORBA::BAD_PARAM(6, CORBA::COMPLETED_NO); };
    const unsigned long before = Count("ping");
    EXPECT_EQ(CallFromOutside("ping"), "BAD_PARAM 6 COMPLETED_NO");
    EXPECT_EQ(Count("ping"), before + 1);
    EXPECT_EQ(Agent().servant.reached, 0);
    EXPECT_EQ(Records(), (Calls{"REQUEST ping", "EXCEPTION ping"}));
}

TEST_F(OrbGateTest, AnExceptionOfTheServantReachesTheClientAndTheLog) {
    PlugIn();
    EXPECT_EQ(CallFromOutside("fail"), "Refused servant");
    EXPECT_EQ(Records(), (Calls{"REQUEST fail", "EXCEPTION fail"}));
}

TEST_F(OrbGateTest, AOnewayIsCounted) {
    PlugIn();
    const unsigned long before = Count("tell");
    EXPECT_EQ(CallFromOutside("tell"), "done");
    // Nobody waits for a oneway, so it may still be on its way.
    EXPECT_TRUE(qv_test::WaitFor([before] { return Count("tell") == before + 1; }));
    EXPECT_TRUE(qv_test::WaitFor([] { return Agent().servant.reached == 2; }));
}

TEST_F(OrbGateTest, ALogThatFailsChangesNothingForTheClient) {
    PlugIn();
    Log().SetWriteHook([](const LogEntry& entry) {
        // The agent's server thread may still be telling of its start, and nothing would stop its exception.
        if (entry.file == "agent_request_interceptor") {
            throw std::runtime_error("disk full");
        }
    });
    EXPECT_EQ(CallFromOutside("echo"), "hello");
    EXPECT_EQ(CallFromOutside("fail"), "Refused servant");
    qv_test::GateAgent::Config().SetReqInterceptorImpl(nullptr);
    EXPECT_EQ(CallFromOutside("ping"), "NO_PERMISSION 0 COMPLETED_NO");
}

TEST_F(OrbGateTest, AHookLearnsTargetAndOperation) {
    struct AskingHooks : NS_CORBA::RequestInterceptorBase {
        void BeforeReceiveRequest(PortableInterceptor::ServerRequestInfo* request) override {
            qv_test::OwnInterceptor interceptor;
            interceptor->GetMgrAndIfName(manager, operation, request);
        }
        void AfterReceiveRequest(PortableInterceptor::ServerRequestInfo*) override { qv_test::TakeTurns(); }
        std::string manager;
        std::string operation;
    } asking;
    qv_test::GateAgent::Config().SetReqInterceptorImpl(&asking);
    EXPECT_EQ(CallFromOutside("echo"), "hello");
    EXPECT_EQ(asking.manager, "IDL:GateTest/Gate:1.0");
    EXPECT_EQ(asking.operation, "echo");
}

TEST(OrbGateRestartTest, CountsSurviveTheProcess) {
    qv_test::TempDir dir;
    const std::string file = dir.Write("CORBAAgentStatisticInfo.dat", "ping = 7\n");
    const qv_test::ChildOptions options{{{"QV_LOG_DIR", dir.str()}}, {}};
    for (const char* expected : {"ping = 8\n", "ping = 9\n"}) {
        const qv_test::RunResult result = qv_test::Run({GATE_PEER, "agent"}, options);
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_EQ(qv_test::ReadFile(file), expected);
    }
}

}  // namespace
