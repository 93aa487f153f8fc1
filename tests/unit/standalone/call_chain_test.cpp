#include "platform/call_chain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "tests/support/child_process.h"
#include "tests/support/free_port.h"
#include "tests/support/http_server.h"
#include "tests/support/temp_dir.h"
#include "tests/support/wait_for.h"

using qv_test::ChildProcess;
using qv_test::HttpServer;
using testing::HasSubstr;
using namespace std::chrono_literals;

namespace {

/// Processes of their own, since a process reads its settings once.
class CallChainProcess : public testing::Test {
  protected:
    qv_test::ChildOptions Options(const std::string& settings) {
        qv_test::ChildOptions options;
        options.env["QV_AGENT_CONFIG"] =
            m_dir.Write("agent.toml", "[platform]\nlog_dir = 'log'\n" + settings);
        options.env["QV_LOG_DIR"] = std::nullopt;
        // The leak checker itself gets stuck at times at the end of a child forked from a process with
        // threads.
        options.env["ASAN_OPTIONS"] = "detect_leaks=0";
        // The probe's own threads run to the very end on purpose.
        options.env["TSAN_OPTIONS"] = "report_thread_leaks=0:atexit_sleep_ms=0";
        return options;
    }
    void RunProbe(const std::string& settings, const std::vector<std::string>& arguments) {
        std::vector<std::string> command{QV_CALL_CHAIN_PROBE};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const auto begin = std::chrono::steady_clock::now();
        result = qv_test::Run(command, Options(settings));
        duration = std::chrono::steady_clock::now() - begin;
    }
    std::string File() const { return qv_test::ReadFile(m_dir.File("log/callchain.jsonl")); }
    auto LinesWritten() const {
        const std::string text = File();
        return std::count(text.begin(), text.end(), '\n');
    }

    qv_test::RunResult result;
    std::chrono::steady_clock::duration duration{};

  private:
    qv_test::TempDir m_dir;
};

TEST_F(CallChainProcess, TracingIsOffUnlessItIsSwitchedOn) {
    for (const char* const settings : {"", "call_chain = false\n", "call_chain = 'perhaps'\n"}) {
        RunProbe(settings, {});
        EXPECT_EQ(result.out, "off 16\n");
        EXPECT_EQ(File(), "");
    }
}

TEST_F(CallChainProcess, SpansAreWrittenBesideTheLogs) {
    RunProbe("call_chain = true\n", {"return", "3"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(LinesWritten(), 3);
}

TEST_F(CallChainProcess, SpansAreWrittenWhileTheProcessRuns) {
    ChildProcess probe({QV_CALL_CHAIN_PROBE, "wait", "2"}, Options("call_chain = true\n"));
    EXPECT_TRUE(qv_test::WaitFor([&] { return LinesWritten() == 2; }));
    probe.Kill();
}

TEST_F(CallChainProcess, IdsBelongToTheThreadAndTheComponent) {
    RunProbe("call_chain = true\n", {"ids"});
    EXPECT_EQ(result.out,
              "[,,]\n0\n[,,]\n[t2,p2,s2]\n[t1,0,s1]\n"
              "-1-1\n[t1,0,s1]\n"
              "[,,]\n1\n");
}

TEST_F(CallChainProcess, AnEndWithoutFarewellHangsNowhere) {
    RunProbe("call_chain = true\n", {"_Exit", "1"});
    EXPECT_EQ(result.code, 7);
    RunProbe("call_chain = true\n", {"abort", "1"});
    EXPECT_EQ(result.code, 128 + 6);
}

TEST_F(CallChainProcess, AForkedChildReportsNothingAndEnds) {
    RunProbe("call_chain = true\n", {"fork", "1"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(LinesWritten(), 1);
}

TEST_F(CallChainProcess, ThreadsThatReportToTheVeryEndDoNoHarm) {
    RunProbe("call_chain = true\ncall_chain_queue = 100\n", {"busy", "1"});
    EXPECT_EQ(result.code, 3) << result.err;
    EXPECT_GE(LinesWritten(), 1);
}

TEST_F(CallChainProcess, TheCollectorGetsThem) {
    const HttpServer server;
    RunProbe("call_chain = true\ncall_chain_collector = '" + server.Url("/api/v2/spans") + "'\n",
             {"return", "2"});
    EXPECT_EQ(result.code, 0);
    ASSERT_EQ(server.Requests().size(), 1U);
    EXPECT_THAT(server.Requests()[0].head, HasSubstr("POST /api/v2/spans"));
    EXPECT_EQ(LinesWritten(), 2);
}

TEST_F(CallChainProcess, NoCollectorKeepsTheProcessFromItsEnd) {
    HttpServer silent;
    silent.AnswerAlways(HttpServer::kSilence);
    HttpServer broken;
    broken.AnswerAlways(500);
    const std::string nobody = "http://127.0.0.1:" + std::to_string(qv_test::FreePort()) + "/";
    // Of a network that no machine is in: packets to it vanish, or the way there is refused.
    for (const std::string& url :
         {silent.Url("/"), broken.Url("/"), nobody, std::string("http://192.0.2.1/")}) {
        RunProbe("call_chain = true\ncall_chain_collector = '" + url + "'\n", {"return", "250"});
        EXPECT_EQ(result.code, 0) << url;
        EXPECT_LT(duration, 3s) << url;
        EXPECT_GT(LinesWritten(), 0) << url;
        EXPECT_EQ(LinesWritten() % 250, 0) << url;
        EXPECT_THAT(result.err, HasSubstr(" spans were not brought to the collector")) << url;
    }
}

}  // namespace
