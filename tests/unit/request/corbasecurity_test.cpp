#include "request/corbasecurity.h"

#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>

#include "platform/security_service.h"
#include "request/process_exception.h"
#include "tests/support/wait_for.h"
#include "tests/unit/logging/log_fixture.h"

namespace NS_CORBA {

/// Shows the values that nothing reads.
class CorbaSecurityMgrProbe {
  public:
    static long Id(CorbaClientID& id) { return id.m_id.value(); }
    static long Interval() { return CorbaSecurityMgr::m_pInstance->m_interval; }
    static bool Exit() { return CorbaSecurityMgr::m_pInstance->m_bExit; }
    static long ClientId() { return CorbaSecurityMgr::m_pInstance->m_clientId.m_id.value(); }
    static bool HasClients() { return !CorbaSecurityMgr::m_pInstance->m_clientList.empty(); }
};

}  // namespace NS_CORBA

namespace {

using NS_CORBA::CorbaClientID;
using NS_CORBA::CorbaClientInfo;
using NS_CORBA::CorbaSecurityMgr;
using NS_CORBA::InterfaceNotExistException;
using Probe = NS_CORBA::CorbaSecurityMgrProbe;
using Calls = std::vector<std::string>;

constexpr char kService[] = "SecurityIF";
constexpr char kPassword[] = "s3cret-Pa55";

/// Notes its calls, answers what it is told and runs a hook in each.
class FakeSecurity final : public NS_SECURITY_SERVICE1::SecurityIF {
  public:
    unsigned long code = 0;
    int logoutCode = 0;
    std::function<void(const std::string& user)> hook;

    unsigned long UserLogin(const std::string& user, const std::string& password,
                            const std::string& clientType, const std::string& nmsAddress,
                            const std::string& reserved) override {
        Note("login " + user + "," + password + "," + clientType + "," + nmsAddress + "," + reserved, user);
        return code;
    }
    int UserLogout(const std::string& nmsAddress, const std::string& user) override {
        Note("logout " + nmsAddress + "," + user, user);
        return logoutCode;
    }
    unsigned long CheckUserLogin(const std::string& user, const std::string& password,
                                 const std::string& nmsAddress) override {
        Note("check " + user + "," + password + "," + nmsAddress, user);
        return code;
    }
    void EncryptPassword(const std::string& plainText, std::string& cipherText) override {
        Note("encrypt " + plainText, "");
        cipherText = "cipher";
    }
    int GetOperRiskLevel(const std::string&) override { return 0; }

    Calls Seen() {
        const std::lock_guard<std::mutex> lock(m_lock);
        return m_calls;
    }

  private:
    void Note(const std::string& call, const std::string& user) {
        {
            const std::lock_guard<std::mutex> lock(m_lock);
            m_calls.push_back(call);
        }
        if (hook) {
            hook(user);
        }
    }

    std::mutex m_lock;
    Calls m_calls;
};

class CorbaSecurityTest : public qv_test::LogFixture {
  protected:
    CorbaSecurityTest() {
        m_former = Put(qv_standalone::MakeServiceObject(security));
        InitLog();
    }
    ~CorbaSecurityTest() override { Put(m_former); }

    void TearDown() override {
        CorbaSecurityMgr::Destroy();  // ahead of the log, in which its thread writes
        LogFixture::TearDown();
    }

    static CorbaSecurityMgr& Security() { return *CorbaSecurityMgr::Instance(); }

    static std::shared_ptr<NS_BUNDLEMGR1::ServiceObjectBase> Put(
        const std::shared_ptr<NS_BUNDLEMGR1::ServiceObjectBase>& object) {
        return qv_standalone::ReplaceServiceObject(qv_standalone::kPlatformBundle, kService, object);
    }
    static void RemoveService() { Put(nullptr); }

    /// Expects exactly one record in all logs: this line of the system channel.
    void ExpectTrace(int line, const std::string& text) {
        const auto entries = capture->Entries();
        ASSERT_EQ(entries.size(), 1u);
        qv_test::ExpectEntry(entries[0], "corbasys", -1, "corbasecurity", line, text);
    }

    void ExpectNoSecretLogged() {
        for (const qv_test::LogEntry& entry : capture->Entries()) {
            EXPECT_EQ(entry.text.find(kPassword), std::string::npos) << entry.text;
        }
    }

    FakeSecurity security;

  private:
    std::shared_ptr<NS_BUNDLEMGR1::ServiceObjectBase> m_former;
};

TEST_F(CorbaSecurityTest, LoginPassesEverythingOnAndTracesTheSuccess) {
    EXPECT_EQ(Security().Login("10.0.0.1:7", "anna", kPassword), 0u);
    EXPECT_EQ(security.Seen(), Calls{std::string("login anna,") + kPassword + ",CORBA,10.0.0.1:7,"});
    ExpectTrace(90, "[CorbaSecurityMgr::Login] NMS-<10.0.0.1:7 anna> Login Successfully!");
}

TEST_F(CorbaSecurityTest, ARefusedLoginReturnsTheCodeAndTracesTheAddressAlone) {
    security.code = 0x123456789ABCUL;
    EXPECT_EQ(Security().Login("10.0.0.1:7", "anna", kPassword), 0x123456789ABCUL);
    ExpectTrace(93, "[CorbaSecurityMgr::Login] NMS-<10.0.0.1:7> Login Failed!");
}

TEST_F(CorbaSecurityTest, ALoginWithoutTheServiceFails) {
    RemoveService();
    EXPECT_EQ(Security().Login("nms", "anna", kPassword), 0x41180006u);
    ExpectTrace(93, "[CorbaSecurityMgr::Login] NMS-<nms> Login Failed!");
}

TEST_F(CorbaSecurityTest, LoginOfAnotherTypeOfClientWritesNoTrace) {
    EXPECT_EQ(Security().Login_i("anna", kPassword, "REST", "nms"), 0u);
    EXPECT_EQ(security.Seen(), Calls{std::string("login anna,") + kPassword + ",REST,nms,"});
    security.code = 9;
    EXPECT_EQ(Security().Login_i("anna", kPassword, "REST", "nms"), 9u);
    RemoveService();
    EXPECT_EQ(Security().Login_i("anna", kPassword, "REST", "nms"), 0x41180006u);
    EXPECT_TRUE(capture->Entries().empty());
}

TEST_F(CorbaSecurityTest, LogoutTracesTheSuccess) {
    Security().Logout("nms", "anna");
    EXPECT_EQ(security.Seen(), Calls{"logout nms,anna"});
    ExpectTrace(112, "[CorbaSecurityMgr::Logout] NMS-<nms anna> Logout Successfully!");
}

TEST_F(CorbaSecurityTest, AFailedLogoutTracesTheSignedCode) {
    security.logoutCode = -5;
    Security().Logout("nms", "anna");
    ExpectTrace(115, "[CorbaSecurityMgr::Logout] NMS-<nms anna> Logout Failed!code: -5");
}

TEST_F(CorbaSecurityTest, ALogoutWithoutTheServiceTracesItsCode) {
    RemoveService();
    Security().Logout("nms", "anna");
    ExpectTrace(115, "[CorbaSecurityMgr::Logout] NMS-<nms anna> Logout Failed!code: 1092091911");
}

TEST_F(CorbaSecurityTest, TheInnerLogoutReturnsTheCodeWithoutATrace) {
    EXPECT_EQ(Security().Logout_i("nms", "anna"), 0);
    security.logoutCode = 3;
    EXPECT_EQ(Security().Logout_i("nms", "anna"), 3);
    RemoveService();
    EXPECT_EQ(Security().Logout_i("nms", "anna"), 0x41180007);
    EXPECT_TRUE(capture->Entries().empty());
}

TEST_F(CorbaSecurityTest, CheckLoginTurnsTheArgumentsRoundAndWritesNoTrace) {
    EXPECT_EQ(Security().checkLogin("nms", "anna", kPassword), 0u);
    EXPECT_EQ(security.Seen(), Calls{std::string("check anna,") + kPassword + ",nms"});
    security.code = 11;
    EXPECT_EQ(Security().checkLogin("nms", "anna", kPassword), 11u);
    RemoveService();
    EXPECT_EQ(Security().checkLogin("nms", "anna", kPassword), 0x41180006u);
    EXPECT_TRUE(capture->Entries().empty());
}

TEST_F(CorbaSecurityTest, EncryptionIsTheServices) {
    std::string cipher = "before";
    Security().EncryptPasswd(kPassword, cipher);
    EXPECT_EQ(cipher, "cipher");
    EXPECT_EQ(security.Seen(), Calls{std::string("encrypt ") + kPassword});
    EXPECT_TRUE(capture->Entries().empty());
}

TEST_F(CorbaSecurityTest, EncryptionWithoutTheServiceRaises) {
    RemoveService();
    std::string cipher = "before";
    try {
        Security().EncryptPasswd(kPassword, cipher);
        FAIL() << "no exception";
    } catch (NS_CORBA::ProcessException& ex) {
        EXPECT_EQ(ex.m_code, 0x41180004u);
    }
    EXPECT_EQ(cipher, "before");
}

TEST_F(CorbaSecurityTest, AServiceThatComesLaterIsFound) {
    RemoveService();
    EXPECT_EQ(Security().checkLogin("nms", "anna", kPassword), 0x41180006u);
    Put(qv_standalone::MakeServiceObject(security));
    EXPECT_EQ(Security().checkLogin("nms", "anna", kPassword), 0u);
}

TEST_F(CorbaSecurityTest, AServiceThatMissesAnotherCountsAsMissing) {
    security.hook = [](const std::string&) {
        InterfaceNotExistException missing;
        throw missing;
    };
    EXPECT_EQ(Security().Login("nms", "anna", kPassword), 0x41180006u);
    EXPECT_EQ(Security().checkLogin("nms", "anna", kPassword), 0x41180006u);
    EXPECT_EQ(Security().Logout_i("nms", "anna"), 0x41180007);
    std::string cipher;
    EXPECT_THROW(Security().EncryptPasswd(kPassword, cipher), InterfaceNotExistException);
    ExpectNoSecretLogged();
}

TEST_F(CorbaSecurityTest, OtherExceptionsPassThroughUnlogged) {
    security.hook = [](const std::string&) { throw std::runtime_error("down"); };
    std::string cipher;
    EXPECT_THROW(Security().Login("nms", "anna", kPassword), std::runtime_error);
    EXPECT_THROW(Security().Logout("nms", "anna"), std::runtime_error);
    EXPECT_THROW(Security().checkLogin("nms", "anna", kPassword), std::runtime_error);
    EXPECT_THROW(Security().EncryptPasswd(kPassword, cipher), std::runtime_error);
    EXPECT_TRUE(capture->Entries().empty());
}

/// A service object that isn't up in a way of its own.
class RaisingObject : public NS_BUNDLEMGR1::ServiceObjectBase {
  public:
    NS_BUNDLEMGR1::ServiceInterface* GetInterface() override { throw std::runtime_error("broken bundle"); }
};

TEST_F(CorbaSecurityTest, ALookupThatRaisesSomethingElseEndsTheProcess) {
    Put(std::make_shared<RaisingObject>());
    EXPECT_DEATH(Security().checkLogin("nms", "anna", kPassword), "broken bundle");
}

TEST_F(CorbaSecurityTest, UsersAndAddressesAreNoFormats) {
    Security().Login("%s%n", "%d%s", kPassword);
    ExpectTrace(90, "[CorbaSecurityMgr::Login] NMS-<%s%n %d%s> Login Successfully!");
}

TEST_F(CorbaSecurityTest, AServiceThatHangsHoldsUpNobodyElse) {
    std::mutex lock;
    std::condition_variable released;
    bool release = false;
    std::atomic<bool> hanging{false};
    security.hook = [&](const std::string& user) {
        if (user == "slow") {
            std::unique_lock<std::mutex> guard(lock);
            hanging = true;
            released.wait(guard, [&] { return release; });
        }
    };
    std::thread slow([] { Security().Login("nms", "slow", kPassword); });
    EXPECT_TRUE(qv_test::WaitFor([&] { return hanging.load(); }));
    EXPECT_EQ(Security().Login("nms", "anna", kPassword), 0u);
    Security().Logout("nms", "anna");
    EXPECT_EQ(Security().checkLogin("nms", "anna", kPassword), 0u);
    std::string cipher;
    Security().EncryptPasswd(kPassword, cipher);
    EXPECT_EQ(cipher, "cipher");
    {
        const std::lock_guard<std::mutex> guard(lock);
        release = true;
    }
    released.notify_all();
    slow.join();
    ExpectNoSecretLogged();
}

TEST_F(CorbaSecurityTest, ManyThreadsLogInAtOnce) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([i] {
            for (int j = 0; j < 50; ++j) {
                EXPECT_EQ(Security().Login("nms", "user" + std::to_string(i), kPassword), 0u);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(security.Seen().size(), 400u);
    EXPECT_EQ(capture->Entries("corbasys").size(), 400u);
    ExpectNoSecretLogged();
}

TEST_F(CorbaSecurityTest, UserIdsAreZero) {
    EXPECT_EQ(Security().GetUserID(""), 0);
    EXPECT_EQ(Security().GetUserID("M4400"), 0);
    EXPECT_EQ(Security().GetUserID("anna"), 0);
}

TEST_F(CorbaSecurityTest, ShakingHandsDoesNothing) {
    Security().ShakeHand();
    EXPECT_TRUE(capture->Entries().empty());
    EXPECT_TRUE(security.Seen().empty());
    EXPECT_EQ(Probe::Interval(), 0);
}

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
