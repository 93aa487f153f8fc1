// The life of the object and of its short-lived thread, and its values.

#include <csignal>
#include <set>
#include <stdexcept>
#include <thread>

#include "tests/unit/request/corbasecurity_fixture.h"

namespace {

using NS_CORBA::CorbaClientID;
using NS_CORBA::CorbaClientInfo;
using NS_CORBA::CorbaSecurityMgr;
using Probe = NS_CORBA::CorbaSecurityMgrProbe;
using qv_test::CorbaSecurityTest;
using qv_test::kPassword;

TEST_F(CorbaSecurityTest, ThereIsOneObject) {
    std::vector<CorbaSecurityMgr*> seen(8);
    std::vector<std::thread> threads;
    for (CorbaSecurityMgr*& slot : seen) {
        threads.emplace_back([&slot] { slot = CorbaSecurityMgr::Instance(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(std::set<CorbaSecurityMgr*>(seen.begin(), seen.end()).size(), 1u);
    EXPECT_NE(seen.front(), nullptr);
}

TEST_F(CorbaSecurityTest, DestroyWithoutAnObjectReturns) {
    CorbaSecurityMgr::Destroy();
    CorbaSecurityMgr::Destroy();
    EXPECT_EQ(CorbaSecurityMgr::m_pInstance, nullptr);
    Security();
    CorbaSecurityMgr::Destroy();
    EXPECT_EQ(CorbaSecurityMgr::m_pInstance, nullptr);
    CorbaSecurityMgr::Destroy();
    EXPECT_TRUE(capture->Entries().empty());
}

TEST_F(CorbaSecurityTest, InitTracesItsStartAndTheEndOfItsThread) {
    EXPECT_TRUE(Security().Init());
    EXPECT_EQ(Probe::Interval(), 100);
    EXPECT_FALSE(Probe::Exit());
    CorbaSecurityMgr::Destroy();  // waits for the thread
    const auto entries = capture->Entries();
    ASSERT_EQ(entries.size(), 2u);
    qv_test::ExpectEntry(entries[0], "corbasys", -1, "corbasecurity", 63,
                         "[CorbaSecurityMgr::Init] Initializing CorbaSecurityMgr!");
    qv_test::ExpectEntry(entries[1], "corbasys", -1, "corbasecurity", 194,
                         "[CorbaSecurityMgr::close] CorbaSecurityMgr has been closed!");
}

TEST_F(CorbaSecurityTest, ALogThatRaisesAtTheThreadsEndEndsTheThreadAlone) {
    capture->SetWriteHook([](const qv_test::LogEntry& entry) {
        if (entry.text.find("has been closed!") != std::string::npos) {
            throw std::runtime_error("full");
        }
    });
    EXPECT_TRUE(Security().Init());
    CorbaSecurityMgr::Destroy();  // waits for the thread
    capture->SetWriteHook({});
    EXPECT_EQ(CorbaSecurityMgr::m_pInstance, nullptr);
}

TEST_F(CorbaSecurityTest, InitAndDestroyAgainAndAgain) {
    for (int i = 0; i < 20; ++i) {
        EXPECT_TRUE(Security().Init());
        CorbaSecurityMgr::Destroy();
    }
    EXPECT_EQ(capture->Entries("corbasys").size(), 40u);
}

TEST_F(CorbaSecurityTest, ExitThreadMarksTheEndAndInitTakesItBack) {
    EXPECT_TRUE(Security().Init());
    Security().ExitThread();
    EXPECT_TRUE(Probe::Exit());
    EXPECT_EQ(Probe::Interval(), 0);
    EXPECT_TRUE(Security().Init());
    EXPECT_FALSE(Probe::Exit());
    EXPECT_EQ(Probe::Interval(), 100);
}

TEST_F(CorbaSecurityTest, TheTaskItselfAnswersZero) {
    EXPECT_EQ(Security().close(7), 0);
    ExpectTrace(194, "[CorbaSecurityMgr::close] CorbaSecurityMgr has been closed!");
    sigset_t blocked;
    std::thread([&] {
        EXPECT_EQ(Security().svc(), 0);
        pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    }).join();
    EXPECT_EQ(sigismember(&blocked, SIGTERM), 1);
    EXPECT_EQ(sigismember(&blocked, SIGUSR1), 1);
}

TEST_F(CorbaSecurityTest, UsersAreNotKept) {
    Security().Login("nms", "anna", kPassword);
    EXPECT_FALSE(Probe::HasClients());
    EXPECT_EQ(Probe::ClientId(), 100);
}

TEST(CorbaClientTest, InfosAreEqualWhenBothTextsAre) {
    CorbaClientInfo info;
    EXPECT_EQ(info.m_strName + info.m_strAddress, "");
    info.m_strName = "anna";
    info.m_strAddress = std::string("a\0b", 3);
    CorbaClientInfo copy(info);
    EXPECT_TRUE(copy == info);
    EXPECT_FALSE(copy != info);
    copy.m_strAddress = std::string("a\0c", 3);
    EXPECT_FALSE(copy == info);
    EXPECT_TRUE(copy != info);
    copy = info;
    EXPECT_TRUE(copy == info);
    copy.m_strName = "Anna";
    EXPECT_TRUE(copy != info);
}

TEST(CorbaClientTest, IdsStartAtOneHundred) {
    CorbaClientID id;
    EXPECT_EQ(Probe::Id(id), 100);
}

}  // namespace
