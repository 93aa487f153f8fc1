// How many requests are in servants at once, what a callback needs, and the signals of the ORB's threads.

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "seam_server.h"
#include "tests/support/child_process.h"
#include "tests/support/wait_for.h"

namespace {

using namespace qv_test;

SeamServer::Options Limited(unsigned threads, bool intercept = true) {
    SeamServer::Options options;
    options.servant_threads = threads;
    options.intercept = intercept;
    return options;
}

/// Counts the threads between its construction and destruction, and keeps the highest number.
class Occupancy {
  public:
    class Guard {
      public:
        explicit Guard(Occupancy& occupancy) : m_occupancy(occupancy) { m_occupancy.Add(1); }
        ~Guard() { m_occupancy.Add(-1); }
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;

      private:
        Occupancy& m_occupancy;
    };

    int highest() const { return m_highest; }

    void Add(int change) {
        const int now = m_inside += change;
        int highest = m_highest;
        while (now > highest && !m_highest.compare_exchange_weak(highest, now)) {
        }
    }

  private:
    std::atomic<int> m_inside{0};
    std::atomic<int> m_highest{0};
};

/// Clients call at the same time: all calls are served, and `highest` is the most that were in servants at
/// once.
void ExpectCrowdServed(SeamServer& server, int clients, int calls, int highest) {
    Occupancy occupancy;
    server.servant.on_call = [&](const std::string&) {
        const Occupancy::Guard guard(occupancy);
        std::this_thread::sleep_for(std::chrono::milliseconds(3));  // makes calls overlap that may
    };
    const RunResult result = qv_test::Run(
        {PeerProgram(), "crowd", server.ior(), "title", "", std::to_string(clients), std::to_string(calls)});
    EXPECT_EQ(result.out, "target x" + std::to_string(clients * calls) + "\n") << result.err;
    EXPECT_EQ(occupancy.highest(), highest);
    TakeTurns();
    server.servant.on_call = nullptr;  // it counts into what ends here
}

class ServantThreadsTest : public ::testing::TestWithParam<unsigned> {};

INSTANTIATE_TEST_SUITE_P(Limit, ServantThreadsTest, ::testing::Values(1u, 2u, 4u));

TEST_P(ServantThreadsTest, NeverMoreAreInServantsAndAllAreServed) {
    SeamServer server(Limited(GetParam()));
    ExpectCrowdServed(server, 6, 20, static_cast<int>(GetParam()));
}

TEST(ServantThreadsUnlimitedTest, AllClientsAreServedAtOnce) {
    SeamServer server(Limited(0));
    std::atomic<int> inside{0};  // one process opens five connections at the most
    server.servant.on_call = [&](const std::string&) {
        ++inside;
        EXPECT_TRUE(WaitFor([&] { return inside >= 5; }));
    };
    const RunResult result = qv_test::Run({PeerProgram(), "crowd", server.ior(), "title", "", "5", "1"});
    EXPECT_EQ(result.out, "target x5\n") << result.err;
}

TEST(ServantThreadsLimitTest, HoldsForALaterOrbOfTheProcessToo) {
    { SeamServer first(Limited(1)); }
    SeamServer server(Limited(1));
    ExpectCrowdServed(server, 4, 10, 1);
}

TEST(ServantThreadsLimitTest, HoldsWithoutInterceptors) {
    SeamServer server(Limited(1, false));
    ExpectCrowdServed(server, 4, 10, 1);
}

TEST(ServantThreadsLimitTest, ACallbackIsServedWhileTheOnlyThreadWaitsForThePeer) {
    SeamServer server(Limited(1));
    // 7 calls: the client's, then alternately the peer's and ours, four deep on either side.
    const RunResult result = qv_test::Run({PeerProgram(), "nest", server.ior(), "6"});
    EXPECT_EQ(result.out, "7\n") << result.err;
    EXPECT_EQ(server.Remote("title"), "target");
}

/// A servant whose "nest" is counted while it runs here, not while it waits for the peer.
class CountingNest : public TargetServant {
  public:
    explicit CountingNest(Occupancy& occupancy) : m_occupancy(occupancy) {}
    CORBA::Long nest(Seam::Target_ptr peer, CORBA::Long depth) override {
        const Occupancy::Guard guard(m_occupancy);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        if (depth <= 0) {
            return 1;
        }
        const Seam::Target_var here = _this();
        m_occupancy.Add(-1);
        const CORBA::Long below = peer->nest(here, depth - 1);
        m_occupancy.Add(1);
        return 1 + below;
    }

  private:
    Occupancy& m_occupancy;
};

TEST(ServantThreadsLimitTest, WithCallbacksUnderWayOnlyOneRunsInServants) {
    Occupancy occupancy;
    CountingNest nest(occupancy);
    SeamServer server(Limited(1));
    const Seam::Target_var target = server.Activate(server.root(), &nest);
    const std::string ior = server.Ior(target.in());
    {
        ChildProcess first({PeerProgram(), "nest", ior, "6"});
        ChildProcess second({PeerProgram(), "nest", ior, "6"});
        ChildProcess third({PeerProgram(), "nest", ior, "6"});
        for (ChildProcess* peer : {&first, &second, &third}) {
            EXPECT_EQ(peer->Wait(), 0) << peer->Err();
            EXPECT_EQ(peer->Out(), "7\n");
        }
    }
    EXPECT_EQ(occupancy.highest(), 1);
}

TEST(ServantThreadsLimitTest, AfterAFailedOutgoingCallTheCountIsRight) {
    SeamServer server(Limited(1));
    Seam::Target_var dead;
    {
        ChildProcess peer({PeerProgram(), "serve"});
        ASSERT_TRUE(peer.WaitForOut("\n"));
        const std::string ior = peer.Out().substr(0, peer.Out().find('\n'));
        dead =
            Seam::Target::_unchecked_narrow(CORBA::Object_var(server.orb()->string_to_object(ior.c_str())));
        EXPECT_FALSE(dead->_non_existent());
    }
    std::atomic<int> failures{0};
    Occupancy occupancy;
    server.servant.on_call = [&](const std::string& operation) {
        if (operation == "echo") {
            try {
                const CORBA::String_var title = dead->title();
            } catch (const CORBA::SystemException&) {
                ++failures;
            }
        }
        const Occupancy::Guard guard(occupancy);
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
    };
    const RunResult failing = qv_test::Run({PeerProgram(), "crowd", server.ior(), "echo", "x", "4", "3"});
    EXPECT_EQ(failing.out, "x x12\n") << failing.err;
    EXPECT_EQ(failures, 12);
    const RunResult result = qv_test::Run({PeerProgram(), "crowd", server.ior(), "title", "", "4", "10"});
    EXPECT_EQ(result.out, "target x40\n") << result.err;
    EXPECT_EQ(occupancy.highest(), 1);
}

TEST(ServantThreadsLimitTest, CollocatedCallsAreNotHeldUp) {
    SeamServer server(Limited(1));
    std::string inner;
    server.servant.on_call = [&](const std::string& operation) {
        if (operation == "inherited") {
            inner = server.Collocated("title");
        }
    };
    EXPECT_EQ(server.Remote("inherited", "x"), "inherited x");
    EXPECT_EQ(inner, "target");
}

TEST(OrbThreadsTest, AllSignalsAreBlockedInServants) {
    SeamServer server;
    sigset_t mask;
    sigemptyset(&mask);
    server.servant.on_call = [&](const std::string&) { pthread_sigmask(SIG_SETMASK, nullptr, &mask); };
    server.Remote("title");
    for (const int number : {SIGTERM, SIGINT, SIGHUP, SIGUSR1, SIGALRM, SIGCHLD}) {
        EXPECT_EQ(sigismember(&mask, number), 1) << number;
    }
}

std::atomic<bool> g_signal_seen{false};
pthread_t g_signal_thread;

void NoteThread(int) {
    g_signal_thread = pthread_self();
    g_signal_seen = true;
}

TEST(OrbThreadsTest, ASignalToTheProcessReachesThisThreadAndNotTheOrbs) {
    SeamServer server;
    struct sigaction action {};
    struct sigaction before {};
    action.sa_handler = NoteThread;
    sigaction(SIGTERM, &action, &before);
    server.servant.on_call = [](const std::string&) { kill(getpid(), SIGTERM); };
    EXPECT_EQ(server.Remote("title"), "target");
    EXPECT_TRUE(WaitFor([] { return g_signal_seen.load(); }));
    EXPECT_TRUE(pthread_equal(g_signal_thread, pthread_self()));
    sigaction(SIGTERM, &before, nullptr);
}

TEST(OrbThreadsTest, TheMaskOfTheThreadThatMakesTheOrbStaysAsItWas) {
    sigset_t before;
    sigset_t after;
    pthread_sigmask(SIG_SETMASK, nullptr, &before);
    SeamServer server;
    pthread_sigmask(SIG_SETMASK, nullptr, &after);
    for (int number = 1; number < 32; ++number) {
        EXPECT_EQ(sigismember(&before, number), sigismember(&after, number)) << number;
    }
}

}  // namespace
