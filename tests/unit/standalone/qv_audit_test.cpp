#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/json.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <memory>

#include "standalone/audit_store.h"
#include "tests/support/child_process.h"
#include "tests/support/temp_dir.h"

using qv_standalone::AuditStore;
using qv_test::RunResult;
using qv_test::TempDir;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

std::string Address(const std::string& user, const std::string& place) {
    return "<USERNAME_TAG>" + user + "</USERNAME_TAG><IPANDPORT_TAG>" + place + "</IPANDPORT_TAG>";
}

std::size_t Lines(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

/// A real audit file, an agent that still has it open, and the real program.
class QvAudit : public testing::Test {
  protected:
    void Begin(unsigned long id, const std::string& operation, const std::string& address,
               const std::string& info = "ParaList = { } ") {
        m_store->BeginAudit(
            id, {{"operName", operation}, {"nmsAddress", address}, {"strInfo", info}, {"riskLevel", "RISK"}});
    }
    void Three() {
        Begin(1, "setTPData", Address("anna", "192.0.2.1:7"));
        m_store->EndAudit(1, 0, "VOID");
        Begin(2, "modifyPassword", Address("bert", "192.0.2.10:8"));
        m_store->EndAudit(2, 1, "USER_EXCEPTION");
        Begin(3, "setOwner", "UNKNOW ADDRESS");
    }
    static RunResult Tool(std::vector<std::string> args, const qv_test::ChildOptions& options = {}) {
        args.insert(args.begin(), QV_AUDIT_TOOL);
        return qv_test::Run(args, options);
    }
    RunResult Audit(std::vector<std::string> args) const {
        args.push_back(m_path);
        return Tool(args);
    }
    static Json::Value Parsed(const std::string& text) {
        Json::Value json;
        std::string errors;
        const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
        EXPECT_TRUE(reader->parse(text.data(), text.data() + text.size(), &json, &errors)) << errors << text;
        return json;
    }
    /// The operations that the tool shows, with a blank after each.
    std::string Operations(std::vector<std::string> args) const {
        args.emplace_back("--json");
        std::string names;
        for (const Json::Value& row : Parsed(Audit(args).out)) {
            names += row["operation"].asString() + " ";
        }
        return names;
    }

    TempDir m_dir;
    std::string m_path = m_dir.File("audit.db");
    std::unique_ptr<AuditStore> m_store = std::make_unique<AuditStore>(m_path, [](const std::string&) {});
};

}  // namespace

TEST_F(QvAudit, ShowsTheNewestFirstInHundredColumnsWhileTheAgentWrites) {
    Three();
    const RunResult result = Audit({});
    EXPECT_EQ(result.code, 0) << result.err;
    ASSERT_EQ(Lines(result.out), 4U) << result.out;
    EXPECT_THAT(result.out,
                HasSubstr("setOwner                    RISK   UNKNOW ADDRESS             open    -\n"));
    EXPECT_THAT(result.out,
                HasSubstr("modifyPassword              RISK   bert@192.0.2.10:8          failed  "));
    EXPECT_THAT(result.out,
                HasSubstr("setTPData                   RISK   anna@192.0.2.1:7           ok      "));
    EXPECT_THAT(result.out, HasSubstr(" ms\n"));
    EXPECT_LT(result.out.find("setOwner"), result.out.find("modifyPassword"));
    EXPECT_LT(result.out.find("modifyPassword"), result.out.find("setTPData"));
    Begin(4, std::string(200, 'o'), Address(std::string(200, 'u'), "192.0.2.1:7"));
    const std::string wide = Audit({"--limit", "1"}).out;
    EXPECT_LE(wide.find('\n', wide.find('\n') + 1) - wide.find('\n') - 1, 100U) << wide;
    EXPECT_THAT(wide, HasSubstr("(the newest 1; --limit shows more)"));
}

TEST_F(QvAudit, Filters) {
    Three();
    EXPECT_EQ(Operations({}), "setOwner modifyPassword setTPData ");
    EXPECT_EQ(Operations({"--operation", "setOwner"}), "setOwner ");
    EXPECT_EQ(Operations({"--operation", "set*"}), "setOwner setTPData ");
    EXPECT_EQ(Operations({"--address", "192.0.2.1"}), "setTPData ") << "not 192.0.2.10";
    EXPECT_EQ(Operations({"--address", "192.0.2.10:8"}), "modifyPassword ");
    EXPECT_EQ(Operations({"--address", "bert@192.0.2.10:8"}), "modifyPassword ");
    EXPECT_EQ(Operations({"--address", "192.0.2.1:8"}), "");
    EXPECT_EQ(Operations({"--open"}), "setOwner ");
    EXPECT_EQ(Operations({"--failed"}), "modifyPassword ");
    EXPECT_EQ(Operations({"--failed", "--open"}), "setOwner modifyPassword ");
    EXPECT_EQ(Operations({"--limit", "2"}), "setOwner modifyPassword ");
    EXPECT_EQ(Operations({"--limit", "2", "--operation", "setTPData"}), "setTPData ");
    EXPECT_EQ(Operations({"--since", "2h"}), "setOwner modifyPassword setTPData ");
    EXPECT_EQ(Operations({"--since", "2999-01-01T00:00:00Z"}), "");
    EXPECT_EQ(Audit({"--operation", "none"}).out, "no such operation in the audit\n");
}

TEST_F(QvAudit, TwentyUnlessTold) {
    for (unsigned long id = 0; id < 25; ++id) {
        Begin(id, "op" + std::to_string(id), "a");
    }
    EXPECT_EQ(Lines(Audit({}).out), 22U);
    EXPECT_EQ(Lines(Audit({"--limit", "0"}).out), 26U);
    EXPECT_EQ(Lines(Audit({"--limit", "25"}).out), 26U);
}

TEST_F(QvAudit, ATimeMayBeGivenInSeveralForms) {
    sqlite3* db = nullptr;
    Begin(1, "early", "a");
    m_store.reset();
    ASSERT_EQ(sqlite3_open(m_path.c_str(), &db), SQLITE_OK);
    // 2026-03-01T12:00:00Z
    ASSERT_EQ(sqlite3_exec(db,
                           "INSERT INTO begun(request_id, begin_ms, process, thread, operName) "
                           "VALUES(1, 1772366400000, 1, 1, 'noon')",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(db);
    qv_test::ChildOptions zone;
    zone.env["TZ"] = "UTC-2";  // two hours ahead of UTC
    const auto shown = [&](const std::string& since) {
        const RunResult result = Tool({m_path, "--operation", "noon", "--json", "--since", since}, zone);
        return result.code != 0 ? result.err : Parsed(result.out).size() == 1 ? "yes" : "no";
    };
    for (const char* before :
         {"2026-03-01T12:00:00Z", "2026-03-01T12:00Z", "2026-03-01T14:00:00", "2026-03-01 14:00",
          "2026-03-01", "2026-03-01T13:00+01:00", "2026-03-01T10:30-01:30", "1000w"}) {
        EXPECT_EQ(shown(before), "yes") << before;
    }
    for (const char* after :
         {"2026-03-01T12:00:01Z", "2026-03-01T14:01", "2026-03-02", "2026-03-01T12:01+00:00", "0s"}) {
        EXPECT_EQ(shown(after), "no") << after;
    }
    for (const char* bad :
         {"yesterday", "2x", "h", "2026-13-01", "2026-03-01T25:00", "2026-03-01Tx", "2026-03-01T12:00+1",
          "2026-03-01T12:00x01:00", "2026-03-01T12:00+24:00", "-2h", "2h "}) {
        EXPECT_THAT(shown(bad), HasSubstr("write a time as 30m, 2h, 3d")) << bad;
    }
    EXPECT_THAT(Tool({m_path, "--operation", "noon"}, zone).out, HasSubstr("2026-03-01 14:00:00"));
    EXPECT_THAT(Tool({m_path, "--operation", "noon", "--json"}, zone).out,
                HasSubstr("\"2026-03-01T12:00:00.000Z\""));
}

TEST_F(QvAudit, ShowsWholeTextsWithControlCharactersEscaped) {
    static constexpr char kNasty[] = "a\0b\x1b[31m\nnext\xc2\x9b \xff \xe2\x80\xae end \xc3\xa9";
    const std::string nasty(kNasty, sizeof kNasty - 1);
    Begin(1, "set\x1b]0;x\a", Address("u\nv", "192.0.2.1:7"), nasty);
    m_store->EndAudit(1, 1, std::string(5000, 'd'));
    const std::string detail = Audit({"--detail"}).out;
    EXPECT_THAT(detail, HasSubstr("set\\x1b]0;x\\x07"));
    EXPECT_THAT(detail, HasSubstr("u\\x0av@192.0.2.1:7"));
    EXPECT_THAT(detail, HasSubstr("asked: a\\x00b\\x1b[31m\n        next\\x9b \\xff \\u202e end \xc3\xa9"));
    EXPECT_THAT(detail, HasSubstr(std::string(5000, 'd')));
    for (const char c : detail) {
        EXPECT_TRUE(c == '\n' || static_cast<unsigned char>(c) >= ' ');
    }
    const Json::Value row = Parsed(Audit({"--json"}).out)[0];
    EXPECT_THAT(row["asked"].asString(), StartsWith(std::string("a\0b\x1b[31m\nnext", 13)));
    EXPECT_EQ(row["user"].asString(), "u\nv");
    EXPECT_EQ(row["code"].asInt(), 1);
}

TEST_F(QvAudit, JsonHoldsAllThereIs) {
    m_store->BeginAudit(77, {{"operName", "setOwner"},
                             {"nmsAddress", Address("anna", "[2001:db8::1]:7")},
                             {"strInfo", "in"},
                             {"riskLevel", "MINOR"},
                             {"extra", "more"}});
    Json::Value row = Parsed(Audit({"--json"}).out)[0];
    EXPECT_EQ(row["request"].asInt(), 77);
    EXPECT_EQ(row["process"].asInt(), getpid());
    EXPECT_EQ(row["host"].asString(), "[2001:db8::1]");
    EXPECT_EQ(row["port"].asString(), "7");
    EXPECT_EQ(row["risk"].asString(), "MINOR");
    EXPECT_EQ(row["further"]["extra"].asString(), "more");
    EXPECT_EQ(row["result"].asString(), "open");
    EXPECT_TRUE(row["end"].isNull() && row["code"].isNull() && row["duration_ms"].isNull());
    m_store->EndAudit(77, 0, "out");
    row = Parsed(Audit({"--json"}).out)[0];
    EXPECT_EQ(row["answered"].asString(), "out");
    EXPECT_EQ(row["result"].asString(), "ok");
    EXPECT_TRUE(row["duration_ms"].isInt64());
    EXPECT_EQ(Audit({"--json", "--failed"}).out, "[]\n");
}

TEST_F(QvAudit, ReadsWhatAKilledAgentLeft) {
    m_store.reset();
    const pid_t child = fork();
    if (child == 0) {
        AuditStore store(m_path, [](const std::string&) {});
        store.BeginAudit(1, {{"operName", "modifyPassword"}});
        kill(getpid(), SIGKILL);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
    ASSERT_GT(std::filesystem::file_size(m_path + "-wal"), 0U);
    EXPECT_EQ(Operations({"--open"}), "modifyPassword ");
    EXPECT_GT(std::filesystem::file_size(m_path + "-wal"), 0U) << "nothing was changed";
}

TEST_F(QvAudit, LeavesNothingBesideAFileThatNobodyWrites) {
    Three();
    m_store.reset();
    const std::string odd = m_dir.File("what? 100%#1.db");
    std::filesystem::rename(m_path, odd);
    const RunResult result = Tool({odd, "--failed"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("modifyPassword"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_dir.path()), {}), 1);
}

TEST_F(QvAudit, ReadsInADirectoryThatItMayNotWriteTo) {
    if (geteuid() == 0 && access("/usr/bin/setpriv", X_OK) != 0) {
        GTEST_SKIP() << "root may write everywhere, and setpriv, which would give that up, isn't installed";
    }
    Three();
    ASSERT_EQ(chmod(m_dir.str().c_str(), 0555), 0);
    for (const char* end : {"", "-wal", "-shm"}) {
        ASSERT_EQ(chmod((m_path + end).c_str(), 0444), 0);
    }
    std::vector<std::string> command = {QV_AUDIT_TOOL, m_path, "--failed"};
    if (geteuid() == 0) {
        command.insert(command.begin(),
                       {"/usr/bin/setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"});
    }
    const RunResult running = qv_test::Run(command);
    EXPECT_EQ(running.code, 0) << running.err;
    EXPECT_THAT(running.out, HasSubstr("modifyPassword"));
    for (const char* end : {"", "-wal", "-shm"}) {
        ASSERT_EQ(chmod((m_path + end).c_str(), 0600), 0);
    }
    if (geteuid() == 0) {
        const RunResult secret = qv_test::Run(command);
        EXPECT_EQ(secret.code, 2);
        EXPECT_THAT(secret.err, HasSubstr("You need the right to read it"));
    }
    ASSERT_EQ(chmod(m_dir.str().c_str(), 0755), 0);
}

TEST_F(QvAudit, TellsWhatIsWrongWithAFile) {
    const RunResult missing = Audit({});
    EXPECT_EQ(missing.code, 3);
    EXPECT_EQ(missing.err, "qv_audit: " + m_path +
                               ": there is no such file; the agent makes it with the first operation that it "
                               "audits\n");
    EXPECT_FALSE(std::filesystem::exists(m_path));
    m_dir.Write("text.db", std::string(3000, 'x'));
    const RunResult text = Tool({m_dir.File("text.db")});
    EXPECT_EQ(text.code, 4);
    EXPECT_THAT(text.err, HasSubstr("this is no audit database (file is not a database)"));
    EXPECT_EQ(Tool({m_dir.Write("empty.db", "")}).code, 4);
    const RunResult folder = Tool({m_dir.str()});
    EXPECT_EQ(folder.code, 4);
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(m_dir.File("other.db").c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db, "CREATE TABLE t(a)", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(db);
    const RunResult other = Tool({m_dir.File("other.db")});
    EXPECT_EQ(other.code, 4);
    EXPECT_THAT(other.err, HasSubstr("this database holds no audit"));
}

TEST_F(QvAudit, TellsThatAFileIsLockedAndThatOneIsDamaged) {
    Three();
    m_store.reset();
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(m_path.c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db,
                           "PRAGMA locking_mode = EXCLUSIVE; INSERT INTO begun(request_id, begin_ms, "
                           "process, thread) VALUES(1,1,1,1)",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    const RunResult locked = Audit({});
    EXPECT_EQ(locked.code, 5);
    EXPECT_THAT(locked.err, HasSubstr("another program keeps the file locked; try again"));
    sqlite3_close(db);
    EXPECT_EQ(Audit({}).code, 0);
    std::string bytes = qv_test::ReadFile(m_path);
    m_dir.Write("audit.db", bytes.replace(4096, bytes.size() - 4096, bytes.size() - 4096, 'x'));
    const RunResult damaged = Audit({});
    EXPECT_EQ(damaged.code, 4);
    EXPECT_THAT(damaged.err, HasSubstr("the audit database is damaged"));
}

TEST_F(QvAudit, FindsTheFileThatTheConfigurationNames) {
    Three();
    const auto asked = [this](const std::string& settings) {
        qv_test::ChildOptions options;
        options.env["QV_AGENT_CONFIG"] = m_dir.Write("conf/agent.toml", "[platform]\n" + settings);
        options.env["QV_LOG_DIR"] = std::nullopt;
        options.working_dir = "/";
        return Tool({"--limit", "1"}, options);
    };
    EXPECT_THAT(asked("audit_file = \"../audit.db\"\n").out, HasSubstr("setOwner"));
    EXPECT_THAT(asked("audit_file = \"" + m_path + "\"\nlog_dir = \"/nowhere\"\n").out,
                HasSubstr("setOwner"));
    EXPECT_THAT(asked("log_dir = \"..\"\n").out, HasSubstr("setOwner"));
    EXPECT_THAT(asked("log_dir = \"../logs\"\n").err,
                HasSubstr(m_dir.File("logs/audit.db") + ": there is no"));
    EXPECT_FALSE(std::filesystem::exists(m_dir.File("logs")));
    const RunResult bad = asked("log_dir = \n");
    EXPECT_EQ(bad.code, 2);
    EXPECT_THAT(bad.err, HasSubstr("agent.toml:2"));
    qv_test::ChildOptions none;
    for (const char* name : {"QV_AGENT_CONFIG", "QV_CFG_DIR", "QV_LOG_DIR"}) {
        none.env[name] = std::nullopt;
    }
    const RunResult unknown = Tool({}, none);
    EXPECT_EQ(unknown.code, 2);
    EXPECT_THAT(unknown.err, HasSubstr("which audit?"));
    none.env["QV_LOG_DIR"] = m_dir.str();
    EXPECT_EQ(Tool({}, none).code, 0);
}
