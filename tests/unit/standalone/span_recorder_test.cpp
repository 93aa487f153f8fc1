#include "standalone/span_recorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <thread>

#include "tests/support/http_server.h"
#include "tests/support/sample_span.h"
#include "tests/support/temp_dir.h"
#include "tests/support/wait_for.h"

using qv_standalone::SpanRecorder;
using qv_standalone::SpanRecorderOptions;
using qv_test::ReadFile;
using qv_test::SampleSpan;
using qv_test::WaitFor;
using testing::ElementsAre;
using testing::HasSubstr;
using namespace std::chrono_literals;

namespace fs = std::filesystem;

namespace {

class SpanRecorderTest : public testing::Test {
  protected:
    SpanRecorderTest() { options.file.path = dir.File("callchain.jsonl"); }

    void TearDown() override { recorder.reset(); }  // it tells to the very end

    void Make() {
        recorder = std::make_unique<SpanRecorder>(options, [this](const std::string& sentence) {
            const std::lock_guard<std::mutex> guard(m_lock);
            m_told.push_back(sentence);
        });
    }
    int Report(const Json::Value& span) { return recorder->Report(span, Json::Value()); }
    auto LinesWritten() {
        const std::string text = ReadFile(options.file.path);
        return std::count(text.begin(), text.end(), '\n');
    }
    std::vector<std::string> Told() {
        const std::lock_guard<std::mutex> guard(m_lock);
        return m_told;
    }

    qv_test::TempDir dir;
    SpanRecorderOptions options;
    std::unique_ptr<SpanRecorder> recorder;

  private:
    std::mutex m_lock;
    std::vector<std::string> m_told;
};

/// Of the threads of spans: the signals that each blocks, by the system's own account.
std::vector<std::string> BlockedBySpanThreads() {
    std::vector<std::string> masks;
    std::error_code ended;  // a thread may end meanwhile
    for (const auto& task : fs::directory_iterator("/proc/self/task", ended)) {
        std::ifstream status(task.path() / "status");
        bool own = false;
        for (std::string line; std::getline(status, line);) {
            own = own || line.rfind("Name:\tqv-span-", 0) == 0;
            if (own && line.rfind("SigBlk:\t", 0) == 0) {
                masks.push_back(line.substr(8));
            }
        }
    }
    return masks;
}

bool WaitForNoSpanThreads() {
    return WaitFor([] { return BlockedBySpanThreads().empty(); });
}

TEST_F(SpanRecorderTest, ASpanIsInTheFileSoon) {
    Make();
    EXPECT_EQ(Report(SampleSpan("00000000000000c1")), 0);
    EXPECT_TRUE(WaitFor([&] { return LinesWritten() == 1; }, 5s));
    EXPECT_THAT(ReadFile(options.file.path), HasSubstr(R"("traceId":"00000000000000c1"})"));
}

TEST_F(SpanRecorderTest, ItIsACopy) {
    options.gather = 1h;
    Make();
    {
        Json::Value span = SampleSpan("00000000000000c1");
        Report(span);
        span["traceId"] = "changed";
    }
    EXPECT_TRUE(recorder->Stop(10s));
    EXPECT_THAT(ReadFile(options.file.path), HasSubstr(R"("traceId":"00000000000000c1"})"));
}

TEST_F(SpanRecorderTest, WhatIsHandedOverBesidesIsKept) {
    Make();
    Json::Value extra;
    extra["answer"] = 42;
    Json::Value span;
    span["id"] = "x";
    EXPECT_EQ(recorder->Report(span, extra), 0);
    EXPECT_TRUE(recorder->Stop(10s));
    EXPECT_EQ(ReadFile(options.file.path), "{\"extra\":{\"answer\":42},\"id\":\"x\"}\n");
}

TEST_F(SpanRecorderTest, WhatIsNoObjectIsRefused) {
    Make();
    EXPECT_EQ(Report(Json::Value()), -1);
    EXPECT_EQ(Report("text"), -1);
    EXPECT_EQ(Report(Json::Value(Json::arrayValue)), -1);
}

TEST_F(SpanRecorderTest, ASpanThatIsTooLongIsDroppedAndCounted) {
    Make();
    Json::Value span;
    span["x"] = std::string(SpanRecorder::kLongest - 8, 'x');
    EXPECT_EQ(Report(span), 0);
    span["x"] = std::string(SpanRecorder::kLongest - 7, 'x');
    EXPECT_EQ(Report(span), -1);
    EXPECT_TRUE(recorder->Stop(10s));
    EXPECT_EQ(LinesWritten(), 1);
    ASSERT_EQ(Told().size(), 1U);
    EXPECT_THAT(Told()[0], HasSubstr("1 spans were dropped"));
}

TEST_F(SpanRecorderTest, AFullQueueDropsAndDelaysNobody) {
    options.queue = 100;
    options.file.path = dir.File("pipe");
    ASSERT_EQ(mkfifo(options.file.path.c_str(), 0600), 0);  // opening it waits for a reader
    Make();
    const auto begin = SpanRecorder::Clock::now();
    int dropped = 0;
    for (int i = 0; i < 1000; ++i) {
        dropped += Report(SampleSpan()) == 0 ? 0 : 1;
    }
    EXPECT_LT(SpanRecorder::Clock::now() - begin, 5s);
    EXPECT_GE(dropped, 800) << "some may have been on their way to the file";
    EXPECT_FALSE(recorder->Stop(50ms)) << "the end doesn't wait for ever, either";
    std::ifstream reader(options.file.path);
    std::size_t lines = 0;
    for (std::string line; std::getline(reader, line);) {
        ++lines;
        if (lines == 1000U - static_cast<std::size_t>(dropped)) {
            break;
        }
    }
    EXPECT_EQ(lines, 1000U - static_cast<std::size_t>(dropped));
    recorder.reset();
    ASSERT_EQ(Told().size(), 1U);
    EXPECT_THAT(Told()[0], HasSubstr(std::to_string(dropped) + " spans were dropped"));
}

TEST_F(SpanRecorderTest, AllThatWasAcceptedIsWrittenAtTheEnd) {
    options.gather = 1h;
    Make();
    std::vector<std::thread> threads;
    std::atomic<int> accepted{0};
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < 500; ++n) {
                accepted += Report(SampleSpan()) == 0 ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(recorder->Stop(10s));
    EXPECT_EQ(accepted, 2000);
    EXPECT_EQ(LinesWritten(), 2000);
    EXPECT_EQ(Report(SampleSpan()), -1) << "after the end";
}

TEST_F(SpanRecorderTest, WithoutASpanThereIsNoThread) {
    Make();
    EXPECT_TRUE(WaitForNoSpanThreads()) << "those of former tests are gone";
    EXPECT_TRUE(recorder->Stop(0ms));
    EXPECT_EQ(Report(SampleSpan()), -1);
    EXPECT_TRUE(BlockedBySpanThreads().empty());
    EXPECT_FALSE(fs::exists(options.file.path));
}

TEST_F(SpanRecorderTest, ItsThreadsTakeNoSignals) {
    const qv_test::HttpServer server;
    options.collector.url = server.Url("/");
    Make();
    ASSERT_TRUE(WaitForNoSpanThreads());
    Report(SampleSpan());
    // Bits 32 and 33 are the C library's, 9 and 19 can't be blocked.
    EXPECT_TRUE(WaitFor([] {
        const auto masks = BlockedBySpanThreads();
        return std::count(masks.begin(), masks.end(), "fffffffe7ffbfeff") == 2;
    }));
}

TEST_F(SpanRecorderTest, TheCollectorGetsWhatTheFileHas) {
    const qv_test::HttpServer server;
    options.collector.url = server.Url("/");
    Make();
    Report(SampleSpan("00000000000000c1"));
    Report(SampleSpan("00000000000000c2"));
    EXPECT_TRUE(recorder->Stop(10s));
    EXPECT_EQ(LinesWritten(), 2);
    ASSERT_EQ(server.Requests().size(), 1U);
    EXPECT_THAT(server.Requests()[0].body, HasSubstr("00000000000000c2"));
}

TEST_F(SpanRecorderTest, ASilentCollectorNeitherStopsTheFileNorTheEnd) {
    qv_test::HttpServer server;
    server.AnswerAlways(qv_test::HttpServer::kSilence);
    options.collector.url = server.Url("/");
    options.collector.gather = 0ms;
    Make();
    Report(SampleSpan());
    ASSERT_TRUE(WaitFor([&] { return server.Requests().size() == 1; }));
    for (int i = 0; i < 500; ++i) {
        Report(SampleSpan());
    }
    EXPECT_TRUE(WaitFor([&] { return LinesWritten() == 501; }));
    const auto begin = SpanRecorder::Clock::now();
    EXPECT_TRUE(recorder->Stop(300ms));
    EXPECT_LT(SpanRecorder::Clock::now() - begin, 2s);
}

TEST_F(SpanRecorderTest, AnUnusableCollectorIsToldAndTheFileStays) {
    options.collector.url = "gopher://host/";
    Make();
    EXPECT_THAT(Told(), ElementsAre(HasSubstr("call_chain_collector can't be used")));
    Report(SampleSpan());
    EXPECT_TRUE(recorder->Stop(10s));
    EXPECT_EQ(LinesWritten(), 1);
}

TEST_F(SpanRecorderTest, InAForkedChildEverySpanIsRefused) {
    Make();
    Report(SampleSpan());
    ASSERT_TRUE(WaitFor([&] { return LinesWritten() == 1; }));
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const bool refused = Report(SampleSpan()) == -1;
        const bool ended = recorder->Stop(1h);
        _exit(refused && ended ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Report(SampleSpan()), 0) << "in the parent all goes on";
    EXPECT_TRUE(recorder->Stop(10s));
    EXPECT_EQ(LinesWritten(), 2);
}

}  // namespace
