// No password may stand in any file that the agent writes or in anything that it prints, whatever becomes of
// the call that brought it.
#include <gmock/gmock.h>
#include <signal.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "accountManagerC.h"
#include "tests/e2e/harness/host_address.h"
#include "tests/e2e/harness/oss_in_process.h"

namespace qv_e2e {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class SecretsTest : public InterfaceTest {
  protected:
    SecretsTest() {
        deployment.Set("bLogOperation", "true");
        deployment.SetPlatform("verbose_log", "true");
        deployment.SetPlatform("call_chain", "true");
        deployment.Set("ORBThreadPoolEnable", "false");  // stops without the pool's seconds
    }

    /// A password that nothing else contains.
    const char* Secret(const std::string& which) {
        return secrets_.insert("Pw-" + which + "-xK7qZ").first->c_str();
    }

    /// Takes a text out of what must not be found.
    void Forget(const std::string& which) { secrets_.erase(Secret(which)); }

    template <class Call>
    void Try(Call call) {
        try {
            call();
        } catch (const CORBA::Exception&) {
        }
    }

    accountManager::AccountMgr_I_var Account(emsSession::EmsSession_I_ptr session) {
        common::Common_I_var manager;
        session->getManager("Account", manager.out());
        return accountManager::AccountMgr_I::_narrow(manager.in());
    }

    /// Calls `operation` with texts for arguments, whatever the interface says about them.
    void CallWithTexts(CORBA::Object_ptr object, const char* operation,
                       const std::vector<std::string>& arguments) {
        const CORBA::Request_var request = object->_request(operation);
        for (const std::string& argument : arguments) {
            request->add_in_arg() <<= argument.c_str();
        }
        request->set_return_type(CORBA::_tc_void);
        request->invoke();
        EXPECT_NE(request->env()->exception(), nullptr) << operation << " was accepted";
    }

    void StopAgent() {
        deployment.agent().Signal(SIGTERM);
        EXPECT_EQ(deployment.agent().Wait(), 0) << deployment.agent().Err();
    }

    /// Looks for all secrets in all files of the deployment and in what the agent has printed.
    void ExpectNoSecretAnywhere() {
        std::size_t files = 0;
        for (const auto& entry : fs::recursive_directory_iterator(deployment.dir().path())) {
            if (entry.is_regular_file()) {
                ++files;
                ExpectNoSecretIn(entry.path().string(), qv_test::ReadFile(entry.path()));
            }
        }
        EXPECT_GE(files, 5U);
        ExpectNoSecretIn("standard output", deployment.agent().Out());
        ExpectNoSecretIn("standard error", deployment.agent().Err());
    }

  private:
    void ExpectNoSecretIn(const std::string& where, const std::string& text) {
        for (const std::string& secret : secrets_) {
            EXPECT_EQ(text.find(secret), std::string::npos) << secret << " stands in " << where;
        }
    }

    std::set<std::string> secrets_;
};

TEST_F(SecretsTest, OfLoginsRightWrongAndLocked) {
    deployment.AddUser("user", Secret("right"));
    deployment.AddUser("locked", Secret("locked"));
    deployment.SetPlatform("login_max_failures", "2");
    Start();
    LogIn("user", Secret("right"))->endSession();
    Try([&] { LogIn("user", Secret("wrong")); });
    Try([&] { LogIn("nobody", Secret("unknown")); });
    Try([&] { LogIn("a\nname<USERNAME_TAG>", Secret("odd")); });
    Try([&] { LogIn(Secret("as-name"), Secret("as-password")); });
    Try([&] { LogIn("user", std::string(2000, 'x') + Secret("long")); });
    for (int i = 0; i < 2; ++i) {
        Try([&] { LogIn("locked", Secret("guess")); });
    }
    std::string reason;
    EXPECT_EQ(FailureOf([&] { LogIn("locked", Secret("locked")); }, &reason),
              globaldefs::EXCPT_ACCESS_DENIED);
    EXPECT_THAT(reason, HasSubstr("locked for a while"));
    StopAgent();
    // What a user gives as the name stands in the record, as the name does.
    EXPECT_THAT(deployment.Log("corbaoper.log"), HasSubstr(Secret("as-name")));
    EXPECT_THAT(deployment.Log("corbaoper.log"), HasSubstr("--- Parameter No.2 = ******"));
    EXPECT_THAT(deployment.Log("audit.db") + deployment.Log("audit.db-wal"), HasSubstr(Secret("as-name")))
        << "the search would find it there";
    Forget("as-name");
    ExpectNoSecretAnywhere();
}

TEST_F(SecretsTest, OfChangedPasswords) {
    deployment.AddUser("user", Secret("first"));
    Start();
    const auto session = LogIn("user", Secret("first"));
    const auto account = Account(session.in());
    account->modifyPassword("user", Secret("first"), Secret("second"));
    LogIn("user", Secret("second"))->ping();
    Try([&] { account->modifyPassword("user", Secret("wrong"), Secret("never")); });
    Try([&] { account->modifyPassword("somebody", Secret("other"), Secret("taken")); });
    Try([&] { account->modifyPassword("user", Secret("short"), "short"); });
    StopAgent();
    EXPECT_THAT(deployment.Log("corbaoper.log"), HasSubstr("Operation Name = modifyPassword"));
    ExpectNoSecretAnywhere();
}

TEST_F(SecretsTest, OfCallsThatDoNotFitTheInterface) {
    deployment.AddUser("user", Secret("right"));
    Start();
    const auto session = LogIn("user", Secret("right"));
    const auto account = Account(session.in());
    const std::string secret = Secret("malformed");
    CallWithTexts(factory.in(), "getEmsSession", {"user", secret});
    CallWithTexts(factory.in(), "getEmsSession", {"user", secret, secret});
    CallWithTexts(factory.in(), "getEmsSession", {secret});
    CallWithTexts(factory.in(), "setPassword", {"user", secret});
    CallWithTexts(account.in(), "modifyPassword", {"user", secret});
    CallWithTexts(account.in(), "modifyPassword", {});
    CallWithTexts(session.in(), "ping!", {secret});
    session->ping();
    StopAgent();
    ExpectNoSecretAnywhere();
}

TEST_F(SecretsTest, OfLoginsThatFailBehindThePassword) {
    deployment.AddUser("user", Secret("right"));
    deployment.Set("MaxSessionOfFIFO", "1");
    deployment.Set("StrategyOfReleasingSession", "0");
    Start();
    const auto first = LogIn();
    EXPECT_EQ(FailureOf([&] { LogIn("user", Secret("right")); }), globaldefs::EXCPT_ACCESS_DENIED);
    client = nmsSession::NmsSession_I::_nil();
    EXPECT_EQ(FailureOf([&] { LogIn("user", Secret("right")); }), globaldefs::EXCPT_INVALID_INPUT);
    StopAgent();
    ExpectNoSecretAnywhere();
}

TEST_F(SecretsTest, OfAStrangerWhoIsTurnedAway) {
    const std::string own = HostAddress();
    if (own.empty()) {
        GTEST_SKIP() << "this host has no address but the loopback's, which is always let in";
    }
    deployment.AddUser("user", Secret("right"));
    deployment.Set("CORBAAgent_Host", "\"" + own + "\"");
    deployment.SetPlatform("oss_addresses", "[\"192.0.2.250\"]");
    Start();
    EXPECT_THROW(LogIn("user", Secret("right")), CORBA::NO_PERMISSION);
    StopAgent();
    EXPECT_THAT(deployment.Log("corbaoper.log"), HasSubstr("EXCEPTION"));
    ExpectNoSecretAnywhere();
}

class FaultySecurityTest : public SecretsTest, public testing::WithParamInterface<const char*> {};

TEST_P(FaultySecurityTest, OfLoginsThatNobodyCanCheck) {
    deployment.SetAgentEnvironment("LD_PRELOAD", QV_FAULTY_SECURITY);
    deployment.SetAgentEnvironment("ASAN_OPTIONS", "verify_asan_link_order=0");
    deployment.SetAgentEnvironment("QV_TEST_SECURITY", GetParam());
    deployment.AddUser("user", Secret("right"));
    Start();
    std::string reason;
    EXPECT_EQ(FailureOf([&] { LogIn("user", Secret("right")); }, &reason), globaldefs::EXCPT_ACCESS_DENIED);
    EXPECT_EQ(reason, "no login is possible at the moment");
    EXPECT_TRUE(deployment.agent().WaitForOut("refused user from"));
    StopAgent();
    EXPECT_THAT(deployment.Log("corbaoper.log"), HasSubstr("--- Parameter No.2 = ******"));
    ExpectNoSecretAnywhere();
}

INSTANTIATE_TEST_SUITE_P(Services, FaultySecurityTest, testing::Values("missing", "raising"),
                         [](const auto& param) { return std::string(param.param); });

}  // namespace
}  // namespace qv_e2e
