// The audit with texts and disks that nobody hopes for.
#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "standalone/audit_store.h"
#include "tests/support/temp_dir.h"

using namespace std::chrono_literals;
using qv_standalone::AuditStore;
using qv_test::TempDir;
using testing::HasSubstr;

namespace {

constexpr uid_t kNobody = 65534;
constexpr auto kLongestCall = 2s;  // 50 ms where nothing else keeps the machine busy

/// A store with a clock in the test's hands, which notes how long its slowest call took.
struct TimedStore {
    explicit TimedStore(const std::string& path)
        : store(
              path, [this](const std::string& text) { told.push_back(text); }, [this] { return now; }) {}

    /// True when the row was written.
    bool Begin(unsigned long id, const std::string& info = "") {
        const auto before = store.Lost();
        const auto begin = std::chrono::steady_clock::now();
        store.BeginAudit(id, {{"operName", "setOwner"}, {"strInfo", info}});
        slowest = std::max(slowest, std::chrono::steady_clock::now() - begin);
        return store.Lost() == before;
    }
    std::string Told(const std::string& separator = "; ") const {
        std::string all;
        for (const std::string& text : told) {
            all += text + separator;
        }
        return all;
    }

    std::chrono::steady_clock::time_point now{1000s};
    std::chrono::steady_clock::duration slowest{};
    std::vector<std::string> told;
    AuditStore store;
};

/// Runs `action` in a process of its own, whose limits and rights it may change, and returns what it returns;
/// "ended by signal N" or the like when it comes to no end.
std::string InChild(const std::function<std::string()>& action) {
    int ends[2];
    if (pipe(ends) != 0) {
        return "no pipe";
    }
    const pid_t child = fork();
    if (child == 0) {
        const std::string text = action();
        (void)!write(ends[1], text.data(), text.size());
        _exit(0);
    }
    close(ends[1]);
    std::string text;
    char part[512];
    for (ssize_t got = 0; (got = read(ends[0], part, sizeof part)) > 0;) {
        text.append(part, static_cast<std::size_t>(got));
    }
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? text : "ended by signal " + std::to_string(WTERMSIG(status));
}

/// The first column of the first row.
std::string Ask(const std::string& path, const std::string& sql) {
    sqlite3* db = nullptr;
    sqlite3_stmt* statement = nullptr;
    std::string answer = "nothing";
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK &&
        sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK &&
        sqlite3_step(statement) == SQLITE_ROW) {
        const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(statement, 0));
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, 0));
        answer = bytes == nullptr ? "" : std::string(bytes, size);
    } else {
        answer = sqlite3_errmsg(db);
    }
    sqlite3_finalize(statement);
    sqlite3_close(db);
    return answer;
}

/// Writes until nothing fits, twice again, then makes room: what the story has to be each time. Empty when it
/// is right.
std::string FillAndRecover(const std::string& path, const std::function<bool()>& makeRoom) {
    constexpr int kFarBeyondTheRoom = 2000;
    TimedStore timed(path);
    unsigned long written = 0;
    const std::string info(1000, 'i');
    while (written < kFarBeyondTheRoom && timed.Begin(written, info)) {
        ++written;
    }
    if (written == 0 || written == kFarBeyondTheRoom) {
        return "written before it was full: " + std::to_string(written) + "; " + timed.Told();
    }
    timed.Begin(5000, info);  // at once: not tried
    timed.now += 2s;
    const std::string large(1 << 20, 'l');
    if (timed.Begin(5001, large)) {
        return "written into nothing";
    }
    if (timed.told.size() != 1 || timed.store.Lost() != 3) {
        return "lost " + std::to_string(timed.store.Lost()) + ": " + timed.Told();
    }
    if (!makeRoom()) {
        return "no room could be made";
    }
    timed.now += 2s;
    if (!timed.Begin(5002, large)) {
        return "not recovered: " + timed.Told();
    }
    if (timed.slowest > kLongestCall) {
        return "too slow";
    }
    if (Ask(path, "SELECT count(*) FROM begun") != std::to_string(written + 1)) {
        return "rows are missing";
    }
    if (Ask(path, "PRAGMA integrity_check") != "ok") {
        return "damaged";
    }
    return timed.told.back().find("is written again; 3 row(s) were lost") == std::string::npos
               ? timed.told.back()
               : "";
}

struct Text {
    const char* what;
    std::string text;
};

}  // namespace

class AuditTexts : public testing::TestWithParam<Text> {};

TEST_P(AuditTexts, AreKeptToTheByte) {
    const TempDir dir;
    const std::string path = dir.File("audit.db");
    AuditStore store(path, [](const std::string& text) { ADD_FAILURE() << text; });
    const std::string& text = GetParam().text;
    const auto begin = std::chrono::steady_clock::now();
    store.BeginAudit(1, {{"operName", text}, {"strInfo", text}, {"extra" + text.substr(0, 100), text}});
    const auto middle = std::chrono::steady_clock::now();
    store.EndAudit(1, 1, text);
    const auto end = std::chrono::steady_clock::now();
    if (text.size() > 1000) {
        std::printf("begin with three texts of %zu bytes: %.0f ms, end with one: %.0f ms\n", text.size(),
                    std::chrono::duration<double, std::milli>(middle - begin).count(),
                    std::chrono::duration<double, std::milli>(end - middle).count());
    }
    EXPECT_EQ(store.Lost(), 0U);
    EXPECT_TRUE(Ask(path, "SELECT operName FROM audit") == text);
    EXPECT_TRUE(Ask(path, "SELECT strInfo FROM audit") == text);
    EXPECT_TRUE(Ask(path, "SELECT detail FROM audit") == text);
    EXPECT_TRUE(Ask(path, "SELECT value FROM further") == text);
    EXPECT_TRUE(Ask(path, "SELECT name FROM further") == "extra" + text.substr(0, 100));
}

INSTANTIATE_TEST_SUITE_P(
    Of, AuditTexts,
    testing::Values(Text{"Nothing", ""}, Text{"Quotes", "'; DROP TABLE begun; --\""},
                    Text{"Nul", std::string("a\0b\0", 4)}, Text{"InvalidUtf8", "\xff\xfe\xc3(\x80"},
                    Text{"CutUtf8", "abc\xe2\x82"}, Text{"Utf8", "\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80"},
                    // NOLINTNEXTLINE(bugprone-string-constructor): so long on purpose
                    Text{"LineEnds", "a\r\nb\n"}, Text{"SixteenMegabytes", std::string(16'000'000, 'x')}),
    [](const auto& one) { return one.param.what; });

TEST(AuditFaults, AFileThatMayNotBeWrittenIsToldOnceAndTakenUpWhenItMayBe) {
    const TempDir dir;
    const std::string path = dir.File("sub/audit.db");
    TimedStore(path).Begin(1);
    const std::string folder = dir.File("sub");
    const bool root = geteuid() == 0;
    ASSERT_EQ(chmod(dir.str().c_str(), 0755), 0);
    if (root) {
        ASSERT_EQ(chown(folder.c_str(), kNobody, kNobody), 0);
        ASSERT_EQ(chown(path.c_str(), kNobody, kNobody), 0);
    }
    const std::string story = InChild([&]() -> std::string {
        if (root && (setgroups(0, nullptr) != 0 || setresgid(kNobody, kNobody, kNobody) != 0 ||
                     setresuid(kNobody, kNobody, kNobody) != 0)) {
            return "root's rights can't be given up";
        }
        chmod(path.c_str(), 0400);
        chmod(folder.c_str(), 0500);
        TimedStore timed(path);
        const bool first = timed.Begin(1);
        timed.now += 2s;
        const bool second = timed.Begin(2);
        const std::string told = timed.Told();
        chmod(folder.c_str(), 0700);
        chmod(path.c_str(), 0600);
        timed.now += 2s;
        const bool third = timed.Begin(3);
        if (first || second || !third || timed.told.size() != 2 || timed.slowest > kLongestCall) {
            return "wrong: " + timed.Told();
        }
        return told;
    });
    EXPECT_THAT(story, HasSubstr("sub/audit.db can't be written ("));
    EXPECT_THAT(story, testing::Not(HasSubstr("wrong")));
    EXPECT_EQ(Ask(path, "SELECT group_concat(request_id) FROM begun"), "1,3");
}

TEST(AuditFaults, ADirectoryThatCanNotBeMadeIsToldOnce) {
    const TempDir dir;
    dir.Write("file", "");
    TimedStore timed(dir.File("file/sub/audit.db"));
    EXPECT_FALSE(timed.Begin(1));
    EXPECT_FALSE(timed.Begin(2));
    EXPECT_EQ(timed.told.size(), 1U);
    EXPECT_THAT(timed.Told(), HasSubstr("can't be written"));
}

TEST(AuditFaults, ALimitOfTheFileSizeCostsRowsAndNothingElse) {
    const TempDir dir;
    const std::string path = dir.File("audit.db");
    const std::string story = InChild([&]() -> std::string {
        signal(SIGXFSZ, SIG_IGN);
        rlimit limit{};
        getrlimit(RLIMIT_FSIZE, &limit);
        const rlim_t former = limit.rlim_cur;
        limit.rlim_cur = 300'000;
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0) {
            return "no limit";
        }
        return FillAndRecover(path, [&] {
            limit.rlim_cur = former;
            return setrlimit(RLIMIT_FSIZE, &limit) == 0;
        });
    });
    EXPECT_EQ(story, "");
}

TEST(AuditFaults, AFullDiskCostsRowsAndNothingElse) {
    const TempDir dir;
    const std::string story = InChild([&]() -> std::string {
        if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("tmpfs", dir.str().c_str(), "tmpfs", 0, "size=512k") != 0) {
            return "no disk";
        }
        return FillAndRecover(dir.File("audit.db"), [&] {
            return mount("tmpfs", dir.str().c_str(), "tmpfs", MS_REMOUNT, "size=64m") == 0;
        });
    });
    if (story == "no disk") {
        GTEST_SKIP() << "this process may not mount a small disk";
    }
    EXPECT_EQ(story, "");
}
