// Commands that fail, and what else goes wrong on the command thread.
#include <tao/ORB.h>
#include <unistd.h>

#include <exception>
#include <stdexcept>

#include "tests/unit/notification/asynnotifymgr_fixture.h"

namespace qv_test {
namespace {

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

using AsynNotifyDeathTest = AsynNotify;

TEST_F(AsynNotifyDeathTest, ACommandThatRaisesWhatIsNotCorbasEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            std::set_terminate([] { _exit(42); });
            AsynNotifyMgr::Instance()->Init();
            Push(Make("a", []() -> int { throw std::runtime_error("broken"); }));
            Push(Make("b"));
            m_diary.Await(4);  // which comes about only where the thread survives
        },
        ::testing::ExitedWithCode(42), "");
}

}  // namespace
}  // namespace qv_test
