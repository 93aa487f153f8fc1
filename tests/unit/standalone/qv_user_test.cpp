#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "standalone/password.h"
#include "standalone/user_file.h"
#include "tests/support/child_process.h"
#include "tests/support/sanitized.h"
#include "tests/support/temp_dir.h"

using qv_standalone::MatchPassword;
using qv_standalone::PasswordMatch;
using qv_standalone::UserFile;
using qv_test::RunResult;
using qv_test::TempDir;
using testing::HasSubstr;
using testing::Not;

namespace {

/// Runs the tool with `password` on its standard input.
RunResult User(const std::string& args, const std::string& password = "") {
    return qv_test::Run(
        {"/bin/sh", "-c", "printf '%s\\n' \"$1\" | " QV_USER_TOOL " " + args, "sh", password});
}

/// What a shell shows at a terminal of its own that runs `script` and is typed `keys` once it asks.
std::string AtTerminal(const std::string& script, const std::string& keys) {
    int terminal = -1;
    const pid_t shell = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (shell == 0) {
        execl("/bin/sh", "sh", "-c", script.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    std::string shown;
    bool typed = false;
    char buffer[4096];
    for (;;) {
        pollfd wait{terminal, POLLIN, 0};
        if (poll(&wait, 1, 30000) != 1) {
            kill(shell, SIGKILL);
        }
        const ssize_t got = read(terminal, buffer, sizeof buffer);
        if (got <= 0) {
            break;
        }
        shown.append(buffer, static_cast<std::size_t>(got));
        if (!typed && shown.find("Password: ") != std::string::npos) {
            typed = write(terminal, keys.data(), keys.size()) == static_cast<ssize_t>(keys.size());
        }
    }
    close(terminal);
    waitpid(shell, nullptr, 0);
    return shown;
}

}  // namespace

TEST(QvUser, DoesNotShowThePasswordAtATerminal) {
    const std::string shown = AtTerminal(QV_USER_TOOL " hash; stty -a", "secret\n");
    EXPECT_THAT(shown, HasSubstr("$argon2id$"));
    EXPECT_THAT(shown, Not(HasSubstr("secret")));
    EXPECT_THAT(shown, HasSubstr(" echo "));
}

TEST(QvUser, LeavesTheTerminalAsItWasWhenItIsInterrupted) {
    if (qv_test::kThreadsSanitized) {
        GTEST_SKIP() << "the sanitizer hands out signals at moments of its own";
    }
    const std::string shown =
        AtTerminal("trap : INT; " QV_USER_TOOL " hash; echo code $?; stty -a", "sec\x03");
    EXPECT_THAT(shown, HasSubstr("code 130"));
    EXPECT_THAT(shown, HasSubstr(" echo "));
    EXPECT_THAT(shown, Not(HasSubstr("sec")));
}

TEST(QvUser, AsksOnAfterItWasStopped) {
    // With job control the shell goes on once the tool is stopped.
    const std::string shown =
        AtTerminal("set -m; " QV_USER_TOOL
                   " hash; stty -a | tr ' ' '\n' | grep echo$; fg; stty -a | tr ' ' '\n' | grep echo$",
                   "\x1asecret\n");
    EXPECT_THAT(shown, HasSubstr("Password: echo\r\n"));
    EXPECT_THAT(shown, HasSubstr("$argon2id$"));
    EXPECT_THAT(shown, Not(HasSubstr("secret")));
    EXPECT_THAT(shown, Not(HasSubstr("-echo")));
}

TEST(QvUser, MakesAFileThatOnlyItsOwnerMayRead) {
    const TempDir dir;
    const std::string file = dir.File("users.toml");
    ASSERT_EQ(User("add " + file + " oss", "secret").code, 0);
    struct stat status {};
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    EXPECT_EQ(MatchPassword(*UserFile::Load(file).HashOf("oss"), "secret"), PasswordMatch::kYes);
    const RunResult check = User("check " + file);
    EXPECT_EQ(check.code, 0);
    EXPECT_EQ(check.out, file + ": 1 user(s), usable\n");
}

TEST(QvUser, AddsReplacesAndRemovesWithoutTouchingTheRest) {
    const TempDir dir;
    const std::string file = dir.Write("users.toml", "# of the north\n");
    chmod(file.c_str(), 0640);
    for (const char* args : {" b", " a", " b"}) {
        ASSERT_EQ(User("add " + file + args, std::string("pw") + args).code, 0);
    }
    EXPECT_EQ(User("list " + file).out, "a\nb\n");
    EXPECT_EQ(User("remove " + file + " a").code, 0);
    EXPECT_EQ(User("list " + file).out, "b\n");
    EXPECT_THAT(qv_test::ReadFile(file), HasSubstr("# of the north\n"));
    struct stat status {};
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
    const RunResult gone = User("remove " + file + " a");
    EXPECT_EQ(gone.code, 1);
    EXPECT_THAT(gone.err, HasSubstr("there is no user \"a\""));
    std::size_t left = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir.path())) {
        left += entry.exists() ? 1U : 0U;
    }
    EXPECT_EQ(left, 1U);
}

TEST(QvUser, RefusesBadNamesEmptyPasswordsAndBrokenFiles) {
    const TempDir dir;
    const std::string file = dir.Write("users.toml", "[[user\n");
    EXPECT_EQ(User("add " + file + " 'a b'", "x").code, 2);
    EXPECT_EQ(User("add " + file + " a", "").code, 2);
    const RunResult broken = User("add " + file + " a", "x");
    EXPECT_EQ(broken.code, 2);
    EXPECT_THAT(broken.err, HasSubstr("users.toml:1: not valid TOML"));
    EXPECT_EQ(qv_test::ReadFile(file), "[[user\n");
    EXPECT_EQ(User("check " + file).code, 2);
}

TEST(QvUser, HashesFromStandardInput) {
    const RunResult result = User("hash", "secret");
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(MatchPassword(result.out.substr(0, result.out.size() - 1), "secret"), PasswordMatch::kYes);
}
