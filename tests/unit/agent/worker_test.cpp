// The thread pool. Its threads never end, so each scenario runs in a process of its own that ends with _exit.
#include <pthread.h>
#include <signal.h>

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>

#include "agent/agentserver.h"
#include "tests/support/free_port.h"
#include "tests/support/wait_for.h"
#include "tests/unit/agent/agent_fixture.h"
#include "tests/unit/agent/fake_orb.h"

namespace qv_test {
namespace {

using NS_CORBA::AgentServer;

class Pool : public AgentTest {
  protected:
    Pool() { ::testing::FLAGS_gtest_death_test_style = "threadsafe"; }

    [[noreturn]] void EndProcess() {
        std::filesystem::remove_all(m_dir.path());  // _exit runs no destructor
        fflush(nullptr);
        _exit(HasFailure() ? 1 : 0);
    }

    FakeOrb& UseFakeOrb() {
        FakeOrb* orb = new FakeOrb;
        config().SetOrb(orb);
        return *orb;
    }

    /// Its run() raises an exception of each kind that the pool tells apart, then returns once, then blocks.
    FakeOrb& UseOrbThatEndsInEachWay() {
        FakeOrb& orb = UseFakeOrb();
        orb.Then([] { throw PortableServer::POAManager::AdapterInactive(); });
        orb.Then([] { throw CORBA::ORB::InvalidName(); });
        orb.Then([] { throw CORBA::COMM_FAILURE(); });
        orb.Then([] { throw OddException(); });
        orb.Then([] { throw 42; });
        orb.Then([] {});
        return orb;
    }

    void StartRun() {
        std::thread([] { AgentServer::Run(); }).detach();
    }

    std::size_t CountPrefix(const std::string& prefix) {
        std::size_t count = 0;
        for (const LogEntry& entry : m_log->Entries(kSys)) {
            count += entry.text.compare(0, prefix.size(), prefix) == 0 ? 1 : 0;
        }
        return count;
    }

    /// Runs the pool with the number of threads that is configured; `expected` of them must run the ORB, and
    /// no more.
    void ExpectThreads(unsigned expected) {
        FakeOrb& orb = UseFakeOrb();
        StartRun();
        EXPECT_TRUE(orb.AwaitBlocked(expected));
        EXPECT_FALSE(WaitFor([&] { return orb.Runners() > expected; }, std::chrono::milliseconds(300)));
        EXPECT_EQ(expected, orb.Runners());
        EXPECT_EQ(expected, orb.Calls());
        EXPECT_FALSE(AgentServer::m_bExit);
    }
};

TEST_F(Pool, ZeroThreadsMeansFour) {
    EXPECT_EXIT(
        {
            m_items.Set("ORBThreadNum", "0");
            config().GetOption();
            EXPECT_EQ(0u, config().GetORBThrdNum());
            ExpectThreads(4);
            EndProcess();
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(Pool, AbsentThreadNumberMeansFour) {
    EXPECT_EXIT(
        {
            config().GetOption();
            ExpectThreads(4);
            EndProcess();
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(Pool, ConfiguredNumberOfThreadsRunTheOrb) {
    EXPECT_EXIT(
        {
            m_items.Set("ORBThreadNum", "2");
            config().GetOption();
            ExpectThreads(2);
            EXPECT_EQ(2u, CountPrefix("thread:"));
            const std::unique_ptr<LogEntry> entry = m_log->Find(kSys, " ORB is runing!");
            EXPECT_TRUE(entry && entry->level == -1 && entry->file == "worker" &&
                        entry->line == LineOfCall("worker", " ORB is runing!"));
            EXPECT_TRUE(entry && entry->text.find_first_not_of("0123456789", 7) == entry->text.find(" ORB"));
            EndProcess();
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(Pool, CallerOfRunDoesNotRunTheOrbAndAllHaveSignalsBlocked) {
    EXPECT_EXIT(
        {
            Probe::ORBThrdNum() = 1;
            FakeOrb& orb = UseFakeOrb();
            std::atomic<pthread_t> caller{};
            std::atomic<bool> blocked{false};
            orb.Then([&] {
                sigset_t mask;
                pthread_sigmask(SIG_BLOCK, nullptr, &mask);
                blocked = sigismember(&mask, SIGTERM) == 1 && sigismember(&mask, SIGINT) == 1 &&
                          sigismember(&mask, SIGUSR2) == 1 && pthread_equal(pthread_self(), caller) == 0;
            });
            m_log->SetWriteHook([&](const LogEntry& entry) {
                // Behind Run's own blocking, so that the threads don't just inherit its mask.
                if (entry.text.find(" start!") != std::string::npos) {
                    sigset_t mask;
                    sigemptyset(&mask);
                    sigaddset(&mask, SIGUSR2);
                    pthread_sigmask(SIG_UNBLOCK, &mask, nullptr);
                }
            });
            std::thread([&] {
                caller = pthread_self();
                AgentServer::Run();
            }).detach();
            EXPECT_TRUE(orb.AwaitBlocked(1));
            EXPECT_TRUE(blocked);
            EndProcess();
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(Pool, WhateverRunRaisesIsLoggedAndTheThreadGoesOn) {
    EXPECT_EXIT(
        {
            Probe::ORBThrdNum() = 1;
            FakeOrb& orb = UseOrbThatEndsInEachWay();
            StartRun();
            EXPECT_TRUE(orb.AwaitBlocked(1));
            EXPECT_EQ(7u, orb.Calls());
            EXPECT_EQ(1u, orb.Runners());
            ExpectExceptionLog(
                "worker",
                "[Worker::svc] Raised PortableServer::POAManager::AdapterInactive during running orb!");
            ExpectExceptionLog("worker", "[Worker::svc] Raised CORBA::UserException during running orb!");
            ExpectExceptionLog("worker", "[Worker::svc] Raised SystemException during running orb!");
            ExpectExceptionLog("worker", "[Worker::svc] Raised during running orb!");
            ExpectLog(kSys, -1, "worker", "[Worker::svc] Raised exception during running orb!");
            ExpectLog(kSys, -1, "worker", "[Worker::svc] ORB return as unknown reason!,now restart it");
            EXPECT_EQ(6, CountLog(kSys, "[Worker::svc] ORB return as unknown reason!,now restart it"));
            EXPECT_EQ(4u, m_log->Entries(kDebug).size()) << "one line for each exception of the ORB";
            EXPECT_EQ(0, CountLog(kSys, "[Worker::svc] ORB return normally"));
            EndProcess();
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(Pool, ALogThatRaisesDoesNotEndTheThread) {
    EXPECT_EXIT(
        {
            Probe::ORBThrdNum() = 1;
            FakeOrb& orb = UseOrbThatEndsInEachWay();
            // Run's own line is its caller's affair.
            m_log->SetWriteHook([](const LogEntry& entry) {
                if (entry.text.find("[AgentServer::Run]") == std::string::npos) {
                    throw std::runtime_error("full");
                }
            });
            StartRun();
            EXPECT_TRUE(orb.AwaitBlocked(1));
            EXPECT_EQ(7u, orb.Calls());
            EXPECT_EQ(1u, orb.Runners());
            EndProcess();
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(Pool, ThreadsThatCannotBeHadEndRunAtOnce) {
    EXPECT_EXIT(
        {
            FakeOrb& orb = UseFakeOrb();
            std::thread([&] {
                pthread_attr_t huge;
                pthread_attr_init(&huge);
                pthread_attr_setstacksize(&huge,
                                          std::size_t{1} << 50);  // no address space holds such a stack
                EXPECT_EQ(0, pthread_setattr_default_np(&huge));
                EXPECT_EQ(0, AgentServer::Run());
            }).join();
            EXPECT_EQ(0u, orb.Calls());
            EXPECT_EQ(2, orb.References()) << "the singleton's and the test's";
            ExpectLog(kSys, -1, "agentserver", "[AgentServer::Run] ORB::run() failed!");
            EXPECT_FALSE(m_log->Contains(kSys, " exit!"));
            EXPECT_FALSE(AgentServer::m_bExit);
            EndProcess();
        },
        ::testing::ExitedWithCode(0), "");
}

class LivePool : public Pool {
  protected:
    static constexpr std::size_t kThreads = 3;

    void InitAgent() {
        m_items.Set("ORBThreadNum", std::to_string(kThreads));
        m_items.Set("CORBAAgent_Host", "127.0.0.2");
        m_items.Set("CORBAAgent_Port", std::to_string(FreePort()));
        const ScopedEnv root("QV_ENV_ROOT", m_dir.str());
        EXPECT_TRUE(config().Init("bundle"));
        m_log->SetWriteHook([this](const LogEntry& entry) {
            if (entry.text == "[Worker::svc] ORB return as unknown reason!,now restart it") {
                const std::lock_guard<std::mutex> guard(m_lock);
                ++m_returns[std::this_thread::get_id()];
            }
        });
    }

    void ForgetReturns() {
        const std::lock_guard<std::mutex> guard(m_lock);
        m_returns.clear();
    }

    bool NoneReturned() {
        const std::lock_guard<std::mutex> guard(m_lock);
        return m_returns.empty();
    }

    /// Each thread of the pool has come out of the ORB again and again.
    bool AllReturnAgainAndAgain() {
        const std::lock_guard<std::mutex> guard(m_lock);
        return m_returns.size() == kThreads &&
               std::all_of(m_returns.begin(), m_returns.end(),
                           [](const auto& entry) { return entry.second >= 20; });
    }

    [[noreturn]] void GoOnAfterShutDownAndDestroy() {
        InitAgent();
        StartRun();
        EXPECT_TRUE(WaitFor([&] { return CountPrefix("thread:") == kThreads; }));
        EXPECT_TRUE(NoneReturned());
        std::thread([] { AgentServer::ShutDown(); }).detach();
        EXPECT_TRUE(WaitFor([&] { return AllReturnAgainAndAgain(); }));
        AgentServer::Destroy();
        ForgetReturns();
        EXPECT_TRUE(WaitFor([&] { return AllReturnAgainAndAgain(); }));
        NS_CORBA::CorbaBaseAgentConfig::Destroy();
        ForgetReturns();
        EXPECT_TRUE(WaitFor([&] { return AllReturnAgainAndAgain(); }));
        EXPECT_FALSE(AgentServer::m_bExit);
        EXPECT_EQ(0u, CountPrefix("[Worker::svc] ORB return normally"));
        EXPECT_FALSE(m_log->Contains(kSys, " ORB is closed!"));
        EndProcess();
    }

  private:
    std::mutex m_lock;
    std::map<std::thread::id, int> m_returns;
};

TEST_F(LivePool, ThreadsGoOnEnteringTheOrbAfterShutDownAndDestroy) {
    EXPECT_EXIT(GoOnAfterShutDownAndDestroy(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace qv_test
