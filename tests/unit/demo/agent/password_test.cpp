#include "demo/agent/core/password.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <thread>
#include <vector>

#include "tests/support/temp_dir.h"

namespace qv_demo {
namespace {

using Result = PasswordChecker::Result;

UserFile OneUser(const std::string& password) {
    const qv_test::TempDir dir;
    const std::string path = dir.Write(
        "users.toml", "[[user]]\nname = \"oss\"\npassword_hash = \"" + HashPassword(password) + "\"\n");
    ::chmod(path.c_str(), 0600);
    return UserFile::Load(path);
}

TEST(Password, HashesAreArgon2idAndNeverTheSameTwice) {
    const std::string hash = HashPassword("secret");
    EXPECT_EQ(hash.rfind("$argon2id$", 0), 0U);
    EXPECT_EQ(hash.find("secret"), std::string::npos);
    EXPECT_NE(hash, HashPassword("secret"));
}

TEST(Password, AcceptsTheRightOneAlone) {
    PasswordChecker checker(OneUser("secret"), 2, 2);
    EXPECT_EQ(checker.Check("oss", "secret"), Result::kAccepted);
    EXPECT_EQ(checker.Check("oss", "Secret"), Result::kRejected);
    EXPECT_EQ(checker.Check("oss", ""), Result::kRejected);
    EXPECT_EQ(checker.Check("nobody", "secret"), Result::kRejected);
    EXPECT_EQ(checker.Check("", ""), Result::kRejected);
}

TEST(Password, AnEndlessOneIsRejectedUnseen) {
    PasswordChecker checker(OneUser("secret"), 1, 0);
    EXPECT_EQ(checker.Check("oss", std::string(1025, 'x').c_str()), Result::kRejected);
}

TEST(Password, ACrowdIsTurnedAwayInsteadOfQueuedUp) {
    PasswordChecker checker(OneUser("secret"), 1, 1);
    std::atomic<int> accepted{0};
    std::atomic<int> busy{0};
    std::atomic<bool> go{false};
    std::vector<std::thread> crowd;
    for (int i = 0; i < 16; ++i) {
        crowd.emplace_back([&] {
            while (!go) {
                std::this_thread::yield();
            }
            const Result result = checker.Check("oss", "secret");
            accepted += result == Result::kAccepted ? 1 : 0;
            busy += result == Result::kBusy ? 1 : 0;
        });
    }
    go = true;
    for (std::thread& one : crowd) {
        one.join();
    }
    EXPECT_EQ(accepted + busy, 16);
    EXPECT_GE(accepted, 1);
    EXPECT_GE(busy, 1);
    EXPECT_EQ(checker.Check("oss", "secret"), Result::kAccepted) << "the checker is free again";
}

TEST(Password, WipeLeavesNothingInTheBuffer) {
    std::string secret = "a password that is long enough to live on the heap";
    const std::size_t length = secret.size();
    secret.reserve(100);
    const char* buffer = secret.data();
    Wipe(secret);
    EXPECT_TRUE(secret.empty());
    for (std::size_t i = 1; i < length; ++i) {
        ASSERT_EQ(buffer[i], '\0') << i;
    }
}

}  // namespace
}  // namespace qv_demo
