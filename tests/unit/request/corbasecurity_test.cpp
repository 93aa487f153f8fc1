#include <atomic>
#include <condition_variable>
#include <stdexcept>
#include <thread>

#include "request/process_exception.h"
#include "tests/support/vtable_place.h"
#include "tests/support/wait_for.h"
#include "tests/unit/request/corbasecurity_fixture.h"

namespace {

using NS_CORBA::InterfaceNotExistException;
using Probe = NS_CORBA::CorbaSecurityMgrProbe;
using qv_test::CorbaSecurityTest;
using qv_test::kPassword;
using Calls = std::vector<std::string>;

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

TEST(SecurityInterface, ItsOperationsStandInTheirOrder) {
    using NS_SECURITY_SERVICE1::SecurityIF;
    EXPECT_EQ(qv_test::VtablePlace(&SecurityIF::UserLogin), 2);
    EXPECT_EQ(qv_test::VtablePlace(&SecurityIF::UserLogout), 3);
    EXPECT_EQ(qv_test::VtablePlace(&SecurityIF::CheckUserLogin), 4);
    EXPECT_EQ(qv_test::VtablePlace(&SecurityIF::EncryptPassword), 5);
}

}  // namespace
