// The command thread: its start and end, its queue, and commands that succeed.
#include "notification/asynnotifymgr.h"

#include <pthread.h>
#include <signal.h>

#include <thread>

#include "tests/support/vtable_place.h"
#include "tests/unit/notification/asynnotifymgr_fixture.h"

namespace qv_test {
namespace {

/// What the calling thread traces of itself.
std::string ThreadLine(const char* end) {
    return "[AsynNotifyMgr::svc] AsynNotifyMgr Thread " + std::to_string(static_cast<int>(pthread_self())) +
           "  " + end;
}

TEST_F(AsynNotify, CommandsRunInOrderAndAreDeleted) {
    ASSERT_EQ(AsynNotifyMgr::Instance()->Init(), 0);
    EXPECT_EQ(Push(Make("a")), 0);
    EXPECT_EQ(Push(Make("b"), 100), 0);
    EXPECT_EQ(AsynNotifyMgr::Instance()->Push(Make("c"), 1), 0);
    ASSERT_TRUE(m_diary.Await(6));
    EXPECT_EQ(m_diary.texts(), (Texts{"run a", "delete a", "run b", "delete b", "run c", "delete c"}));
}

TEST_F(AsynNotify, StartAndEndOfTheThreadAreTraced) {
    ASSERT_EQ(AsynNotifyMgr::Instance()->Init(), 0);
    Texts expected;
    Push(Make("a", [&] {
        expected = {ThreadLine("started!"), ThreadLine("exit!")};
        return 0;
    }));
    ASSERT_TRUE(m_diary.Await(2));
    Stop();
    EXPECT_EQ(Logged(), expected);
    EXPECT_TRUE(Logged("corbadebug").empty());
}

TEST_F(AsynNotify, NullCommandIsRefused) {
    EXPECT_EQ(Push(nullptr, 1), -1);
    EXPECT_EQ(Logged(), Texts{"[AsynNotifyMgr::Push] Get a null notifycmd object!"});
    EXPECT_EQ(Queue().message_count(), 0u);
}

TEST_F(AsynNotify, CommandsRunWithAllSignalsBlocked) {
    ASSERT_EQ(AsynNotifyMgr::Instance()->Init(), 0);
    std::vector<int> open;
    Push(Make("a", [&open] {
        sigset_t mask;
        pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGALRM, SIGCHLD, SIGPIPE}) {
            if (sigismember(&mask, signal) == 0) {
                open.push_back(signal);
            }
        }
        return 0;
    }));
    ASSERT_TRUE(m_diary.Await(2));
    EXPECT_TRUE(open.empty());
}

TEST_F(AsynNotify, QueueHasTheUsualLimitsAndAnOddCounter) {
    EXPECT_EQ(Queue().high_water_mark(), 16384u);
    EXPECT_EQ(Queue().low_water_mark(), 16384u);
    EXPECT_EQ(Queue().message_length(), 262144u);
    EXPECT_EQ(Queue().message_bytes(), 0u);
}

TEST_F(AsynNotify, PushWaitsWhileTheQueueIsFull) {
    StartBusy();
    EXPECT_EQ(Push(Make("a"), 16384), 0);  // into an empty queue
    std::atomic<bool> through{false};
    std::thread pusher([&] {
        Push(Make("b"), 1);
        through = true;
    });
    EXPECT_FALSE(WaitFor([&] { return through.load(); }, std::chrono::milliseconds(200)));
    EXPECT_EQ(Queue().message_count(), 1u);
    OpenGate();
    pusher.join();
    ASSERT_TRUE(m_diary.Await(6));
    EXPECT_EQ(m_diary.texts(), (Texts{"run busy", "delete busy", "run a", "delete a", "run b", "delete b"}));
}

TEST_F(AsynNotify, SizeOfZeroIsNeverHeldBack) {
    StartBusy();
    for (int i = 0; i < 20000; ++i) {
        Push(Make("x"), 0);
    }
    EXPECT_EQ(Queue().message_count(), 20000u);
    OpenGate();
    EXPECT_TRUE(m_diary.Await(2UL * 20001));
}

TEST_F(AsynNotify, SizeOfOneIsHeldBackAt16384Commands) {
    StartBusy();
    for (int i = 0; i < 16384; ++i) {
        Push(Make("x"), 1);
    }
    std::thread pusher([&] { Push(Make("last"), 1); });
    EXPECT_FALSE(WaitFor([] { return Queue().message_count() > 16384; }, std::chrono::milliseconds(200)));
    OpenGate();
    pusher.join();
    EXPECT_TRUE(m_diary.Await(2UL * 16386));
}

TEST_F(AsynNotify, NegativeSizeFillsTheQueue) {
    StartBusy();
    EXPECT_EQ(Push(Make("a"), -1), 0);
    EXPECT_TRUE(Queue().is_full());
    OpenGate();
    EXPECT_TRUE(m_diary.Await(4));
    EXPECT_FALSE(Queue().is_full());
}

TEST_F(AsynNotify, CommandMayPushAnother) {
    ASSERT_EQ(AsynNotifyMgr::Instance()->Init(), 0);
    Push(Make("a", [this] { return Push(Make("b")); }));
    ASSERT_TRUE(m_diary.Await(4));
    EXPECT_EQ(m_diary.texts(), (Texts{"run a", "delete a", "run b", "delete b"}));
}

TEST_F(AsynNotify, ExitThreadEndsTheThreadAndDropsWhatWaits) {
    StartBusy();
    Command waiting(m_diary, "waiting");  // on the stack, since nobody will delete it
    Push(&waiting);
    EXPECT_NE(AsynNotifyMgr::ExitThread(), -1);
    OpenGate();
    AsynNotifyMgr::Destroy();
    EXPECT_EQ(AsynNotifyMgr::instance, nullptr);
    EXPECT_EQ(m_diary.texts(), (Texts{"run busy", "delete busy"}));
}

TEST_F(AsynNotify, PushBehindTheEndIsLostAndCountsAsDone) {
    ASSERT_EQ(AsynNotifyMgr::Instance()->Init(), 0);
    AsynNotifyMgr::ExitThread();
    Command late(m_diary, "late");
    EXPECT_EQ(Push(&late), 0);
    EXPECT_EQ(Queue().message_count(), 0u);
    AsynNotifyMgr::Destroy();
    EXPECT_TRUE(m_diary.texts().empty());
}

TEST_F(AsynNotify, ExitThreadFreesAPusherThatWaits) {
    StartBusy();
    Command first(m_diary, "first");
    Command second(m_diary, "second");
    Push(&first, 16384);
    std::thread pusher([&] { EXPECT_EQ(Push(&second), 0); });
    EXPECT_NE(AsynNotifyMgr::ExitThread(), -1);
    pusher.join();
    OpenGate();
}

TEST_F(AsynNotify, WithoutAnInstanceThereIsNothingToEnd) {
    EXPECT_EQ(AsynNotifyMgr::ExitThread(), 0);
    AsynNotifyMgr::Destroy();
    EXPECT_EQ(AsynNotifyMgr::instance, nullptr);
    AsynNotifyMgr own;
    Command command(m_diary, "a");
    EXPECT_EQ(own.Push(&command, 0), -1);
}

TEST_F(AsynNotify, ItMayBeStartedAnewAfterDestroy) {
    for (const std::size_t run : {1u, 2u}) {
        ASSERT_EQ(AsynNotifyMgr::Instance()->Init(), 0);
        Push(Make("a"));
        ASSERT_TRUE(m_diary.Await(2 * run));
        Stop();
    }
    EXPECT_EQ(Logged().size(), 4u);
}

TEST_F(AsynNotify, ThreadsPushAtOnce) {
    ASSERT_EQ(AsynNotifyMgr::Instance()->Init(), 0);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([this] {
            for (int n = 0; n < 250; ++n) {
                Push(Make("x"), 64);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(m_diary.Await(2000));
}

TEST(NotifyCommand, ItsWorkStandsBehindTheDestructor) {
    EXPECT_EQ(VtablePlace(&NotifyCmd::adaptAndNotify), 2);
}

}  // namespace
}  // namespace qv_test
