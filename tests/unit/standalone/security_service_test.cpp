#include "standalone/security_service.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <time.h>

#include <mutex>
#include <thread>

#include "platform/bundle_mgr.h"
#include "standalone/password.h"
#include "standalone/registry.h"
#include "standalone/security_codes.h"
#include "tests/support/temp_dir.h"

using namespace std::chrono_literals;
using namespace qv_standalone;
using qv_test::TempDir;
using testing::HasSubstr;
using testing::Not;

namespace {

class SecurityServiceTest : public testing::Test {
  protected:
    void SetUp() override { WriteUsers("[[user]]\nname='oss'\npassword_hash='" + s_hash + "'\n"); }
    static void SetUpTestSuite() { s_hash = HashPassword("secret"); }

    void WriteUsers(const std::string& text) {
        m_options.users_file = m_dir.Write("users.toml", text);
        ASSERT_EQ(chmod(m_options.users_file.c_str(), 0600), 0);
    }
    SecurityService& Service() {
        if (!m_service) {
            m_service = std::make_unique<SecurityService>(
                m_options,
                [this](int, const std::string& text) {
                    std::lock_guard<std::mutex> guard(m_lock);
                    m_log += text + "\n";
                },
                [this] { return m_now; }, m_match);
        }
        return *m_service;
    }
    unsigned long Login(const std::string& user, const std::string& password) {
        return Service().UserLogin(user, password, "CORBA", "192.0.2.1:4", "");
    }

    static std::string s_hash;
    TempDir m_dir;
    SecurityOptions m_options;
    SecurityService::Match m_match = MatchPassword;
    std::chrono::steady_clock::time_point m_now{1000000s};
    std::mutex m_lock;
    std::string m_log;
    std::unique_ptr<SecurityService> m_service;
};
std::string SecurityServiceTest::s_hash;

}  // namespace

TEST_F(SecurityServiceTest, TellsRightFromWrongAndNeverLogsAPassword) {
    EXPECT_EQ(Login("oss", "secret"), kLoginAccepted);
    EXPECT_EQ(Service().CheckUserLogin("oss", "secret", "a"), kLoginAccepted);
    EXPECT_EQ(Login("oss", "hunter2"), kLoginRejected);
    EXPECT_EQ(Login("nobody", "secret"), kLoginRejected);
    EXPECT_EQ(Login("a\nb", "secret"), kLoginRejected);
    EXPECT_EQ(Service().UserLogout("a", "oss"), 0);
    EXPECT_THAT(m_log,
                HasSubstr("login of user \"oss\" from <192.0.2.1:4> refused: the user or the password"));
    EXPECT_THAT(m_log, HasSubstr("user with a name that no user can have"));
    EXPECT_THAT(m_log, Not(HasSubstr("hunter2")));
    EXPECT_THAT(m_log, Not(HasSubstr("secret")));
    EXPECT_THAT(m_log, Not(HasSubstr("$argon2")));
}

TEST_F(SecurityServiceTest, AnUnknownUserCostsOneCheckLikeAKnownOne) {
    const auto form = [](const std::string& hash) { return hash.substr(0, hash.find('$', 20)); };
    std::vector<std::string> hashes;
    m_match = [&](const std::string& hash, const std::string& password) {
        EXPECT_EQ(password, "secret");
        hashes.push_back(hash);
        return PasswordMatch::kYes;
    };
    EXPECT_EQ(Login("oss", "secret"), kLoginAccepted);
    EXPECT_EQ(Login("nobody", "secret"), kLoginRejected) << "whatever the check says";
    ASSERT_EQ(hashes.size(), 2U);
    EXPECT_EQ(hashes[0], s_hash);
    EXPECT_NE(hashes[1], s_hash);
    EXPECT_EQ(hashes[1].size(), s_hash.size());
    EXPECT_EQ(form(hashes[1]), form(s_hash)) << "the same memory and passes";
    EXPECT_TRUE(IsPasswordHash(hashes[1])) << "so that a check goes all the way";
    EXPECT_EQ(Login("a b", "secret"), kLoginRejected);
    EXPECT_EQ(hashes.size(), 2U) << "no user can have this name, and everybody knows that";
}

TEST_F(SecurityServiceTest, ALockedUserCostsNoCheckKnownOrNot) {
    m_options.max_failures = 1;
    int checks = 0;
    m_match = [&](const std::string&, const std::string&) {
        ++checks;
        return PasswordMatch::kNo;
    };
    for (const char* user : {"oss", "nobody"}) {
        checks = 0;
        EXPECT_EQ(Login(user, "x"), kLoginRejected);
        EXPECT_EQ(Login(user, "x"), kLoginLocked);
        EXPECT_EQ(checks, 1) << user;
    }
}

TEST_F(SecurityServiceTest, WithoutMemoryACheckIsBusyAndNoFailure) {
    m_options.max_failures = 1;
    PasswordMatch result = PasswordMatch::kNoMemory;
    m_match = [&](const std::string&, const std::string&) { return result; };
    EXPECT_EQ(Login("oss", "secret"), kLoginBusy);
    EXPECT_EQ(Login("oss", "secret"), kLoginBusy) << "not locked";
    result = PasswordMatch::kYes;
    EXPECT_EQ(Login("oss", "secret"), kLoginAccepted);
}

TEST(PasswordOfNobody, IsCheckedAllTheWay) {
    // Processor time of this thread: other programs don't count.
    const auto cost = [](const std::string& hash) {
        double best = 1e9;
        for (int i = 0; i < 3; ++i) {
            timespec begin{};
            timespec end{};
            clock_gettime(CLOCK_THREAD_CPUTIME_ID, &begin);
            EXPECT_EQ(MatchPassword(hash, "wrong"), PasswordMatch::kNo);
            clock_gettime(CLOCK_THREAD_CPUTIME_ID, &end);
            best = std::min(best, static_cast<double>(end.tv_sec - begin.tv_sec) +
                                      static_cast<double>(end.tv_nsec - begin.tv_nsec) / 1e9);
        }
        return best;
    };
    const double known = cost(HashPassword("secret"));
    const double nobody = cost(HashOfNobody(""));
    EXPECT_GT(nobody, known * 0.7);
    EXPECT_LT(nobody, known * 1.4);
}

TEST_F(SecurityServiceTest, LocksKnownAndUnknownUsersAlikeForTheLockTime) {
    m_options.max_failures = 2;
    for (const char* user : {"oss", "nobody"}) {
        EXPECT_EQ(Login(user, "x"), kLoginRejected);
        EXPECT_EQ(Login(user, "x"), kLoginRejected);
        EXPECT_EQ(Login(user, "secret"), kLoginLocked);
    }
    EXPECT_THAT(m_log, HasSubstr("user \"oss\" is locked for 300 s after 2 failed logins"));
    m_now += 299s;
    EXPECT_EQ(Login("oss", "secret"), kLoginLocked);
    m_now += 1s;
    EXPECT_EQ(Login("oss", "secret"), kLoginAccepted);
}

TEST_F(SecurityServiceTest, ASuccessForgivesTheFailuresBefore) {
    m_options.max_failures = 2;
    Login("oss", "x");
    EXPECT_EQ(Login("oss", "secret"), kLoginAccepted);
    Login("oss", "x");
    EXPECT_EQ(Login("oss", "secret"), kLoginAccepted);
}

TEST_F(SecurityServiceTest, WithoutAUsableFileNobodyLogsIn) {
    chmod(m_options.users_file.c_str(), 0644);
    EXPECT_EQ(Login("oss", "secret"), kLoginNoUsers);
    EXPECT_THAT(m_log, HasSubstr("everyone on this machine may open it"));
    EXPECT_THAT(m_log, HasSubstr("nobody can log in"));
    m_service.reset();
    m_options.users_file.clear();
    EXPECT_EQ(Login("oss", "secret"), kLoginNoUsers);
}

TEST_F(SecurityServiceTest, AChangedFileCountsAndABadOneIsToldOnceAndIgnored) {
    EXPECT_EQ(Login("new", "secret"), kLoginRejected);
    WriteUsers("[[user]]\nname='new'\npassword_hash='" + s_hash + "'\n");
    EXPECT_EQ(Login("new", "secret"), kLoginAccepted) << "at once";
    EXPECT_EQ(Login("oss", "secret"), kLoginRejected) << "no longer in the file";
    WriteUsers("[[user]]\nname='new'\npassword_hash='$argon2id$broken'\n");
    m_log.clear();
    Service().Refresh();
    EXPECT_THAT(m_log, HasSubstr("users.toml:1: the password_hash of \"new\" is no Argon2id hash"));
    EXPECT_THAT(m_log, HasSubstr("the users read before stay in force"));
    EXPECT_THAT(m_log, Not(HasSubstr("broken")));
    m_log.clear();
    Service().Refresh();
    EXPECT_EQ(m_log, "");
    EXPECT_EQ(Login("new", "secret"), kLoginAccepted);
}

TEST_F(SecurityServiceTest, ACrowdIsTurnedAwayAtOnce) {
    m_options.max_checks = 1;
    m_options.max_waiting = 0;
    m_options.max_failures = 1000;
    Service();
    std::vector<unsigned long> codes(8);
    std::vector<std::thread> threads;
    for (unsigned long& code : codes) {
        threads.emplace_back([&] { code = Login("oss", "secret"); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_GE(std::count(codes.begin(), codes.end(), kLoginAccepted), 1);
    EXPECT_GE(std::count(codes.begin(), codes.end(), kLoginBusy), 1);
    EXPECT_EQ(std::count(codes.begin(), codes.end(), kLoginRejected), 0);
    EXPECT_EQ(Login("oss", "secret"), kLoginAccepted);
}

TEST_F(SecurityServiceTest, EncryptsToAHashThatTheFileTakes) {
    std::string cipher = "before";
    Service().EncryptPassword("secret", cipher);
    EXPECT_TRUE(IsPasswordHash(cipher));
    EXPECT_EQ(MatchPassword(cipher, "secret"), PasswordMatch::kYes);
    EXPECT_EQ(MatchPassword(cipher, "Secret"), PasswordMatch::kNo);
    EXPECT_THROW(Service().EncryptPassword(std::string(1025, 'x'), cipher), std::runtime_error);
    EXPECT_EQ(cipher, "");
}

TEST_F(SecurityServiceTest, RiskLevelsComeFromTheFileAndStayWhenItBreaks) {
    m_options.risk_file = m_dir.File("risk.toml");
    EXPECT_EQ(Service().GetOperRiskLevel("modifyPassword"), 2);
    EXPECT_EQ(Service().GetOperRiskLevel("getEmsSession"), 1);
    EXPECT_EQ(Service().GetOperRiskLevel("ping"), 0);
    m_dir.Write("risk.toml", "[risk]\nping = 1\n\"set*\" = 2\nsetOwner = 0\n");
    Service().Refresh();
    EXPECT_EQ(Service().GetOperRiskLevel("modifyPassword"), 0);
    EXPECT_EQ(Service().GetOperRiskLevel("ping"), 1);
    EXPECT_EQ(Service().GetOperRiskLevel("setTPData"), 2);
    EXPECT_EQ(Service().GetOperRiskLevel("set"), 2);
    EXPECT_EQ(Service().GetOperRiskLevel("setOwner"), 0);
    m_dir.Write("risk.toml", "[risk]\nping = 3\n");
    Service().Refresh();
    EXPECT_THAT(m_log, HasSubstr("risk.toml:2: ping: a level is 0 (not audited)"));
    EXPECT_EQ(Service().GetOperRiskLevel("ping"), 1);
}

TEST_F(SecurityServiceTest, RiskLevelsMayBeAskedWhileTheFileChanges) {
    m_options.risk_file = m_dir.Write("risk.toml", "[risk]\nping = 1\n");
    SecurityService& service = Service();
    std::atomic<bool> stop{false};
    std::atomic<int> wrong{0};
    std::thread reader([&] {
        while (!stop) {
            wrong += service.GetOperRiskLevel("ping") == 1 ? 0 : 1;
        }
    });
    for (int i = 0; i < 50; ++i) {
        m_dir.Write("risk.toml", "[risk]\nping = 1\n" + std::string(static_cast<std::size_t>(i), '#') + "\n");
        service.Refresh();
    }
    stop = true;
    reader.join();
    EXPECT_EQ(wrong, 0);
}

TEST_F(SecurityServiceTest, ARiskLevelTakesLessThanAMicrosecond) {
    SecurityService& service = Service();
    const std::string operation = "getAllManagedElementNames";
    constexpr int kCalls = 200000;
    int sum = 0;
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < kCalls; ++i) {
        sum += service.GetOperRiskLevel(operation);
    }
    const std::chrono::duration<double, std::nano> took = std::chrono::steady_clock::now() - begin;
    RecordProperty("nanoseconds", std::to_string(took.count() / kCalls));
    std::printf("GetOperRiskLevel: %.0f ns\n", took.count() / kCalls);
    EXPECT_EQ(sum, 0);
    EXPECT_LT(took.count() / kCalls, 1000);  // generous, for sanitizers and busy machines
}

TEST(SecurityService, IsAlwaysOffered) {
    auto* const bundle = NS_BUNDLEMGR1::BundleMgr::Instance()->GetBundle(kPlatformBundle);
    ASSERT_NE(bundle, nullptr);
    const auto objects = bundle->GetServiceObjects();
    ASSERT_EQ(objects.count(kSecurityService), 1U);
    auto* const security =
        dynamic_cast<NS_SECURITY_SERVICE1::SecurityIF*>(objects.at(kSecurityService)->GetInterface());
    ASSERT_NE(security, nullptr);
    EXPECT_EQ(security->GetOperRiskLevel("modifyPassword"), 2);
}

TEST(SecurityCodes, EachHasAReason) {
    EXPECT_EQ(LoginReason(kLoginAccepted), "the login is accepted");
    EXPECT_THAT(LoginReason(kLoginNoUsers), HasSubstr("set users_file"));
    EXPECT_EQ(LoginReason(0x41180006), "the security service refused with the code 0x41180006");
}
