// The command thread. What it does ends in a queue, a log and commands that tell of themselves.
#include "notification/asynnotifymgr.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <tao/ORB.h>

#include <atomic>
#include <future>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include "logging/logmgr.h"
#include "tests/support/capturing_log_service.h"
#include "tests/support/config_items.h"
#include "tests/support/wait_for.h"

namespace {

using NS_CORBA::AsynNotifyMgr;
using NS_CORBA::NotifyCmd;
using qv_test::LogEntry;
using qv_test::WaitFor;
using Texts = std::vector<std::string>;

/// What commands did, in order.
class Diary {
  public:
    void Add(const std::string& text) {
        const std::lock_guard<std::mutex> guard(m_lock);
        m_texts.push_back(text);
    }
    Texts texts() const {
        const std::lock_guard<std::mutex> guard(m_lock);
        return m_texts;
    }
    bool Await(std::size_t count) const {
        return WaitFor([&] { return texts().size() >= count; });
    }

  private:
    mutable std::mutex m_lock;
    Texts m_texts;
};

/// Notes its run and its end, and does what it is given to do in between.
class Command : public NotifyCmd {
  public:
    using Work = std::function<int()>;

    Command(Diary& diary, std::string name, Work work = {})
        : m_diary(diary), m_name(std::move(name)), m_work(std::move(work)) {}
    ~Command() override { m_diary.Add("delete " + m_name); }

    int adaptAndNotify() override {
        m_diary.Add("run " + m_name);
        return m_work ? m_work() : 0;
    }

  private:
    Diary& m_diary;
    const std::string m_name;
    const Work m_work;
};

class AsynNotify : public ::testing::Test {
  protected:
    AsynNotify() {
        NS_CORBA::CorbaLogMgr::Destroy();
        NS_CORBA::CorbaLogMgr::Instance()->Init();
        m_log->Clear();
    }
    ~AsynNotify() override {
        OpenGate();
        AsynNotifyMgr::ExitThread();
        AsynNotifyMgr::Destroy();
        NS_CORBA::CorbaLogMgr::Destroy();
    }

    Command* Make(const std::string& name, Command::Work work = {}) {
        return new Command(m_diary, name, std::move(work));
    }
    int Push(NotifyCmd* command, int size = 0) { return NS_CORBA::Push(command, size); }
    /// Starts the thread and keeps it busy with a command until OpenGate.
    void StartBusy() {
        ASSERT_EQ(AsynNotifyMgr::Instance()->Init(), 0);
        const std::shared_future<void> open = m_opened;
        Push(Make("busy", [open] {
            open.wait();
            return 0;
        }));
        ASSERT_TRUE(m_diary.Await(1));
    }
    void OpenGate() {
        if (!m_open.exchange(true)) {
            m_gate.set_value();
        }
    }
    static void Stop() {
        AsynNotifyMgr::ExitThread();
        AsynNotifyMgr::Destroy();
    }
    static auto& Queue() { return *AsynNotifyMgr::Instance()->msg_queue(); }

    Texts Logged(const std::string& category = "corbasys") {
        Texts texts;
        for (const LogEntry& entry : m_log->Entries(category)) {
            EXPECT_EQ(entry.file, "asynnotifymgr");
            EXPECT_EQ(entry.function, "unknown");
            EXPECT_EQ(entry.level, category == "corbasys" ? -1 : 1);
            texts.push_back(entry.text);
        }
        return texts;
    }

    qv_test::ScopedLogCapture m_log;
    qv_test::ScopedConfigItems m_items;
    Diary m_diary;

  private:
    std::promise<void> m_gate;
    std::shared_future<void> m_opened = m_gate.get_future().share();
    std::atomic<bool> m_open{false};
};

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

TEST_F(AsynNotify, FailingCommandIsTracedAndDeletedLikeAnyOther) {
    ASSERT_EQ(AsynNotifyMgr::Instance()->Init(), 0);
    Push(Make("a", [] { return 5; }));
    Push(Make("b", [] { return -1; }));
    Push(Make("c"));
    ASSERT_TRUE(m_diary.Await(6));
    EXPECT_EQ(m_diary.texts(), (Texts{"run a", "delete a", "run b", "delete b", "run c", "delete c"}));
    const Texts logged = Logged();
    ASSERT_EQ(logged.size(), 3u);
    EXPECT_EQ(logged[1], "[AsynNotifyMgr::svc] TAAsyNotifyMgr adapt And send Notify wrong!");
    EXPECT_EQ(logged[2], logged[1]);
}

TEST_F(AsynNotify, RaisingCommandIsLoggedAndDeletedLikeAnyOther) {
    ASSERT_EQ(AsynNotifyMgr::Instance()->Init(), 0);
    Push(Make("a", []() -> int { throw CORBA::TRANSIENT(); }));
    Push(Make("b"));
    ASSERT_TRUE(m_diary.Await(4));
    EXPECT_EQ(m_diary.texts(), (Texts{"run a", "delete a", "run b", "delete b"}));
    const Texts logged = Logged("corbadebug");
    ASSERT_EQ(logged.size(), 1u);
    const std::string head = "Exception: [AsynNotifyMgr::svc] Exception raised during adaptAndNotify()!==>";
    EXPECT_EQ(logged[0].substr(0, head.size()), head);
    EXPECT_NE(logged[0].find("IDL:omg.org/CORBA/TRANSIENT:1.0"), std::string::npos);
}

TEST_F(AsynNotify, ALogThatRaisesStopsNoCommandAndNoThread) {
    std::atomic<int> raised{0};
    m_log->SetWriteHook([&raised](const LogEntry&) {
        ++raised;
        throw std::runtime_error("full");
    });
    ASSERT_EQ(AsynNotifyMgr::Instance()->Init(), 0);
    Push(Make("a", [] { return 5; }));
    Push(Make("b", []() -> int { throw CORBA::TRANSIENT(); }));
    const char* const none = nullptr;
    ACE_Message_Block empty(none, 0, 0);
    Queue().enqueue_tail(&empty, nullptr);
    Push(Make("c"));
    ASSERT_TRUE(m_diary.Await(6));
    EXPECT_EQ(m_diary.texts(), (Texts{"run a", "delete a", "run b", "delete b", "run c", "delete c"}));
    Stop();
    m_log->SetWriteHook({});
    EXPECT_EQ(raised, 5) << "start, two commands, an empty block, end";
}

TEST_F(AsynNotify, BlocksWithoutACommandArePassedOver) {
    ASSERT_EQ(AsynNotifyMgr::Instance()->Init(), 0);
    const char* const none = nullptr;
    ACE_Message_Block empty(none, 0, 0);
    Queue().enqueue_tail(&empty, nullptr);
    Push(Make("a"));
    ASSERT_TRUE(m_diary.Await(2));
    Stop();
    const Texts logged = Logged();
    ASSERT_EQ(logged.size(), 3u);
    EXPECT_EQ(logged[1], "[AsynNotifyMgr::svc] TAAsyNotifyMgr get a null cmd!");
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

}  // namespace
