#include "agent/agentserver.h"

#include <signal.h>

#include <atomic>
#include <chrono>
#include <future>

#include "tests/support/free_port.h"
#include "tests/support/wait_for.h"
#include "tests/unit/agent/agent_fixture.h"
#include "tests/unit/agent/fake_orb.h"
#include "tests/unit/agent/plain_servant.h"

namespace qv_test {
namespace {

using NS_CORBA::AgentServer;
using Clock = std::chrono::steady_clock;

constexpr int kNoProcess = 0x7ffffff0;  // higher than an id can be
constexpr const char* kEnding = "Corba Service[NamingService] exiting... ";

bool AllSignalsBlocked() {
    sigset_t blocked;
    sigemptyset(&blocked);
    pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    // SIGKILL and SIGSTOP can't be blocked, and the C library keeps two signals for itself.
    for (int number = 1; number <= SIGRTMAX; ++number) {
        const bool reserved = number > 31 && number < SIGRTMIN;
        if (number != SIGKILL && number != SIGSTOP && !reserved && sigismember(&blocked, number) != 1) {
            return false;
        }
    }
    return true;
}

class Server : public AgentTest {
  protected:
    ~Server() override { AgentServer::m_bExit = false; }

    /// An ORB with a root POA, as Init leaves them.
    void InitAgent() {
        m_items.Set("CORBAAgent_Host", "127.0.0.2");
        m_items.Set("CORBAAgent_Port", std::to_string(FreePort()));
        const ScopedEnv root("QV_ENV_ROOT", m_dir.str());
        ASSERT_TRUE(config().Init("bundle"));
    }

    FakeOrb& UseFakeOrb() {
        FakeOrb* orb = new FakeOrb;
        m_fake = orb;
        config().SetOrb(orb);
        return *orb;
    }

    PortableServer::POAManager::State State() {
        PortableServer::POA_var poa = config().GetRootPoa();
        return PortableServer::POAManager_var(poa->the_POAManager())->get_state();
    }

    std::future<int> RunInThread() {
        return std::async(std::launch::async, [] { return AgentServer::Run(); });
    }

    CORBA::ORB_var m_fake;
};

TEST_F(Server, NothingCanBeActivatedBeforeInit) {
    EXPECT_EQ(-1, AgentServer::Activate());
    EXPECT_EQ(-1, AgentServer::Discard());
}

TEST_F(Server, ActivateOpensTheManager) {
    InitAgent();
    EXPECT_EQ(PortableServer::POAManager::HOLDING, State());
    EXPECT_EQ(0, AgentServer::Activate());
    EXPECT_EQ(PortableServer::POAManager::ACTIVE, State());
}

TEST_F(Server, DiscardMakesTheManagerDiscard) {
    InitAgent();
    ASSERT_EQ(0, AgentServer::Activate());
    EXPECT_EQ(0, AgentServer::Discard());
    EXPECT_EQ(PortableServer::POAManager::DISCARDING, State());
    EXPECT_EQ(0, AgentServer::Activate());
    EXPECT_EQ(PortableServer::POAManager::ACTIVE, State());
}

/// A call stays in it until it is let go.
class BusyServant : public PlainServant {
  public:
    char* Echo(const char* text) override {
        m_entered.set_value();
        m_leave.get_future().wait();
        left = true;
        return PlainServant::Echo(text);
    }
    void AwaitCall() { m_entered.get_future().wait(); }
    void LetGo() { m_leave.set_value(); }

    std::atomic<bool> left{false};

  private:
    std::promise<void> m_entered;
    std::promise<void> m_leave;
};

TEST_F(Server, DiscardWaitsForTheRequestsUnderWay) {
    const CORBA::ORB_var orb = MakeOrb();
    const CORBA::Object_var root = orb->resolve_initial_references("RootPOA");
    Probe::RootPOA() = PortableServer::POA::_narrow(root.in());
    ASSERT_EQ(0, AgentServer::Activate());
    BusyServant* servant = new BusyServant;
    PortableServer::ServantBase_var owner(servant);
    QvAgentTest::Plain_var plain = servant->_this();
    std::thread caller([&] { EXPECT_STREQ("text", CORBA::String_var(plain->Echo("text")).in()); });
    servant->AwaitCall();
    std::future<bool> waited = std::async(std::launch::async, [&] {
        EXPECT_EQ(0, AgentServer::Discard());
        return servant->left.load();
    });
    EXPECT_TRUE(WaitFor([&] { return State() == PortableServer::POAManager::DISCARDING; }));
    EXPECT_EQ(std::future_status::timeout, waited.wait_for(std::chrono::milliseconds(200)));
    servant->LetGo();
    EXPECT_TRUE(waited.get());
    caller.join();
}

TEST_F(Server, ManagerThatRaisesIsLogged) {
    InitAgent();
    PortableServer::POA_var poa = config().GetRootPoa();
    PortableServer::POAManager_var(poa->the_POAManager())->deactivate(false, true);
    EXPECT_EQ(-1, AgentServer::Activate());
    ExpectExceptionLog("agentserver", "[AgentServer::Activate] Raised during activating POAManager!");
    EXPECT_EQ(-1, AgentServer::Discard());
    ExpectExceptionLog("agentserver", "[AgentServer::Discard] Raised during discard_requests!");
}

TEST_F(Server, ShutDownBeforeInitReturnsAtOnce) {
    const auto start = Clock::now();
    AgentServer::ShutDown();
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(500));
    EXPECT_TRUE(m_log->Entries(kDebug).empty());
}

TEST_F(Server, DestroyBeforeInitStillEndsServices) {
    Probe::ServicePids()["NamingService"] = kNoProcess;
    AgentServer::Destroy();
    EXPECT_TRUE(m_log->Contains(kSys, kEnding));
    Probe::ServicePids().clear();
    m_log->Clear();
    AgentServer::Destroy();
    EXPECT_TRUE(m_log->Entries().empty());
}

TEST_F(Server, WithoutPoolTheCallerRunsTheOrb) {
    FakeOrb& orb = UseFakeOrb();
    Probe::ORBThreadPool() = false;
    std::thread::id runner;
    bool blocked = false;
    orb.Then([&] {
        runner = std::this_thread::get_id();
        blocked = AllSignalsBlocked();
    });
    std::thread::id caller;
    int thread = 0;
    std::thread([&] {
        caller = std::this_thread::get_id();
        thread = static_cast<int>(pthread_self());
        EXPECT_EQ(0, AgentServer::Run());
    }).join();
    EXPECT_EQ(caller, runner);
    EXPECT_TRUE(blocked);
    EXPECT_EQ(1u, orb.Calls());
    const std::string number = std::to_string(thread);
    // Start and exit are logged by the one routine that takes the formatted text.
    ExpectLog(kSys, -1, "agentserver", "[AgentServer::Run] Corba ORB Thread " + number + " start!",
              "\"%s\", text");
    ExpectLog(kSys, -1, "agentserver", "[AgentServer::Run] Corba ORB Thread " + number + " exit!",
              "\"%s\", text");
    EXPECT_FALSE(AgentServer::m_bExit);
}

TEST_F(Server, WithoutPoolShutDownReturnsWithTheOrb) {
    FakeOrb& orb = UseFakeOrb();
    Probe::ORBThreadPool() = false;
    std::future<int> result = RunInThread();
    ASSERT_TRUE(orb.AwaitBlocked(1));
    const auto start = Clock::now();
    AgentServer::ShutDown();
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(500));
    EXPECT_EQ(0, result.get());
    EXPECT_TRUE(orb.IsShutDown());
    EXPECT_FALSE(orb.WaitedForCompletion());
    EXPECT_FALSE(AgentServer::m_bExit);
}

TEST_F(Server, WithoutPoolASystemExceptionEndsRun) {
    FakeOrb& orb = UseFakeOrb();
    Probe::ORBThreadPool() = false;
    orb.Then([] { throw CORBA::BAD_INV_ORDER(); });
    EXPECT_EQ(-1, RunInThread().get());
    ExpectExceptionLog("agentserver", "[AgentServer::Run] Raised during running orb!");
    EXPECT_FALSE(m_log->Contains(kSys, " exit!"));
    EXPECT_FALSE(AgentServer::m_bExit);
}

TEST_F(Server, WithoutPoolOtherExceptionsPassThrough) {
    FakeOrb& orb = UseFakeOrb();
    Probe::ORBThreadPool() = false;
    orb.Then([] { throw CORBA::ORB::InvalidName(); });
    EXPECT_THROW(RunInThread().get(), CORBA::ORB::InvalidName);
}

TEST_F(Server, AgentWorkerHidesTheResult) {
    FakeOrb& orb = UseFakeOrb();
    Probe::ORBThreadPool() = false;
    orb.Then([] { throw CORBA::BAD_INV_ORDER(); });
    EXPECT_EQ(0, std::async(std::launch::async, [] { return AgentServer::AgentWorker(); }).get());
    EXPECT_EQ(1u, orb.Calls());
}

TEST_F(Server, DoOtherWorkDoesNothing) {
    EXPECT_EQ(0, AgentServer::DoOtherWork());
    EXPECT_TRUE(m_log->Entries().empty());
}

TEST_F(Server, WithPoolShutDownWaitsSixPasses) {
    UseFakeOrb();
    const auto start = Clock::now();
    AgentServer::ShutDown();
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(5990));
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(6900));
}

TEST_F(Server, WithPoolShutDownDoesNotWaitForWhatHasEnded) {
    UseFakeOrb();
    AgentServer::m_bExit = true;
    const auto start = Clock::now();
    AgentServer::ShutDown();
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(500));
}

TEST_F(Server, WithPoolASignalEndsShutDown) {
    UseFakeOrb();
    std::atomic<bool> done{false};
    std::thread signaller([&] {
        while (!done) {
            AgentServer::m_condORBDestroy.signal();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    const auto start = Clock::now();
    AgentServer::ShutDown();
    done = true;
    signaller.join();
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(900));
}

TEST_F(Server, WithPoolShutDownLooksAtTheFlagAfterEachPass) {
    UseFakeOrb();
    std::thread setter([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        AgentServer::m_bExit = true;  // without a signal
    });
    const auto start = Clock::now();
    AgentServer::ShutDown();
    setter.join();
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(2500));
}

TEST_F(Server, OrbThatRaisesIsLoggedByShutDownAndDestroy) {
    InitAgent();
    CORBA::ORB_var(config().GetOrb())->destroy();
    AgentServer::ShutDown();
    ExpectExceptionLog("agentserver", "[AgentServer::Destroy] Raised during shutdown orb!");
    AgentServer::Destroy();
    ExpectExceptionLog("agentserver", "[AgentServer::Destroy] Raised during destroying orb!");
}

TEST_F(Server, DestroyDestroysTheOrb) {
    FakeOrb& orb = UseFakeOrb();
    AgentServer::Destroy();
    EXPECT_EQ(1u, orb.Destroyed());
}

TEST_F(Server, ServicesEndAfterTheOrb) {
    FakeOrb& orb = UseFakeOrb();
    Probe::ServicePids()["NamingService"] = kNoProcess;
    bool ended = true;
    orb.OnDestroy([&] { ended = m_log->Contains(kSys, kEnding); });
    AgentServer::Destroy();
    EXPECT_FALSE(ended) << "before the ORB";
    EXPECT_TRUE(m_log->Contains(kSys, kEnding));
}

TEST_F(Server, ServicesEndWhenTheOrbRaisesToo) {
    FakeOrb& orb = UseFakeOrb();
    Probe::ServicePids()["NamingService"] = kNoProcess;
    orb.OnDestroy([] { throw CORBA::BAD_INV_ORDER(); });
    AgentServer::Destroy();
    ExpectExceptionLog("agentserver", "[AgentServer::Destroy] Raised during destroying orb!");
    EXPECT_TRUE(m_log->Contains(kSys, kEnding));
}

}  // namespace
}  // namespace qv_test
