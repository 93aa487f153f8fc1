#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <limits>
#include <optional>
#include <sstream>

#include "standalone/span_line.h"
#include "tests/support/child_process.h"
#include "tests/support/sample_span.h"
#include "tests/support/temp_dir.h"
#include "tools/qv_spans_timeline.h"
#include "tools/text.h"

using qv_test::RunResult;
using qv_test::SampleSpan;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

constexpr Json::Int64 kBegin = 1700000000123;

std::string Line(const Json::Value& span) {
    std::string line;
    qv_standalone::AppendCompact(span, line);
    return line + "\n";
}

std::string Line(const std::string& trace, int from, int to, const std::string& ip = "10.0.0.1",
                 const std::string& operation = "ping", const std::string& result = "200") {
    return Line(SampleSpan(trace, kBegin + from, kBegin + to, ip, "4711", result, operation));
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

class QvSpans : public testing::Test {
  protected:
    RunResult Spans(std::vector<std::string> args) {
        args.insert(args.begin(), QV_SPANS_TOOL);
        qv_test::ChildOptions options;
        options.env["LC_ALL"] = "C";
        options.env["TZ"] = "UTC";
        options.env["QV_AGENT_CONFIG"] = config;
        options.env["QV_CFG_DIR"] = std::nullopt;
        options.env["QV_LOG_DIR"] = std::nullopt;
        return qv_test::Run(args, options);
    }
    std::string Write(const std::string& text) { return dir.Write("callchain.jsonl", text); }

    qv_test::TempDir dir;
    std::optional<std::string> config;
};

}  // namespace

TEST_F(QvSpans, ShowsATimeLine) {
    const std::string file =
        Write(Line("a", 0, 60) + Line("b", 30, 30, "10.0.0.2", "getAllManagedElements", "500") +
              Line("c", 40, 100, "", "getSupportedManagers"));
    const RunResult result = Spans({file, "--width", "100"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.err, "");
    // 39 columns are left for the bar.
    EXPECT_EQ(
        result.out,
        "from 2023-11-14 22:13:20.123\n"
        " START  0                                100 ms   TOOK  CALLER         OPERATION              "
        "RESULT\n"
        "     0  =======================                  60 ms  10.0.0.1:4711  ping                   200\n"
        "+30 ms             |                              0 ms  10.0.0.2:4711  getAllManagedElements  500\n"
        "+40 ms                 ========================  60 ms  :4711          getSupportedManagers   "
        "200\n");
}

TEST_F(QvSpans, NoLineIsWiderThanAsked) {
    std::string text;
    for (int i = 0; i < 20; ++i) {
        text += Line("a", i * 977, i * 1000 + i % 3 * 5000, "2001:db8:1234:5678:9abc:def0:1234:5678",
                     "anOperationWithAVeryLongNameThatNobodyWouldWantToType", i % 2 == 0 ? "200" : "500");
    }
    const std::string file = Write(text);
    for (const char* const width : {"80", "100", "200"}) {
        const RunResult result = Spans({file, "--width", width});
        EXPECT_EQ(Lines(result.out).size(), 22U);
        for (const std::string& line : Lines(result.out)) {
            EXPECT_LE(line.size(), std::stoul(width)) << line;
        }
    }
}

TEST_F(QvSpans, ReadsTheFilesPutAsideToo) {
    dir.Write("callchain.2.jsonl", Line("oldest", 0, 1, "10.0.0.1", "first"));
    dir.Write("callchain.1.jsonl", Line("older", 10, 11, "10.0.0.1", "second"));
    dir.Write("callchain.4.jsonl", Line("lost", 5, 6, "10.0.0.1", "notOfThisRow"));
    const RunResult result = Spans({Write(Line("new", 20, 21, "10.0.0.1", "third"))});
    const auto lines = Lines(result.out);
    ASSERT_EQ(lines.size(), 5U) << result.out;
    EXPECT_THAT(lines[2], HasSubstr("first"));
    EXPECT_THAT(lines[3], HasSubstr("second"));
    EXPECT_THAT(lines[4], HasSubstr("third"));
}

TEST_F(QvSpans, ShowsTheNewestByTheirBeginning) {
    std::string text;
    for (const int begin : {40, 10, 30, 20}) {
        text += Line("t" + std::to_string(begin), begin, begin + 1);
    }
    const RunResult result = Spans({Write(text), "--last", "2", "--json"});
    EXPECT_EQ(result.out, Line("t30", 30, 31) + Line("t40", 40, 41));
    EXPECT_EQ(Lines(Spans({dir.File("callchain.jsonl"), "--last", "0", "--json"}).out).size(), 4U);
}

TEST_F(QvSpans, PicksByCallerAndTrace) {
    const std::string file =
        Write(Line("a", 0, 1, "10.0.0.1") + Line("b", 2, 3, "10.0.0.11") + Line("c", 4, 5, "10.0.0.2"));
    EXPECT_EQ(Spans({file, "--json", "--caller", "10.0.0.1"}).out, Line("a", 0, 1, "10.0.0.1"));
    EXPECT_EQ(Spans({file, "--json", "--caller", "10.0.0.2:4711"}).out, Line("c", 4, 5, "10.0.0.2"));
    EXPECT_EQ(Spans({file, "--json", "--caller", "10.0.0.2:1"}).out, "");
    EXPECT_EQ(Spans({file, "--json", "--trace", "b"}).out, Line("b", 2, 3, "10.0.0.11"));
    const RunResult none = Spans({file, "--trace", "x"});
    EXPECT_EQ(none.code, 0);
    EXPECT_EQ(none.out, "no such span\n");
}

TEST_F(QvSpans, LinesThatAreNoSpansAreCountedAndSkipped) {
    const std::string file =
        Write("{\"half\":\n\n[]\n5\n{}\n{\"annotations\":[1,2]}\n" + std::string(2000, '[') + "\n" +
              std::string("\0\xff\n", 3) + Line("a", 0, 1) + "{\"no end");
    const RunResult result = Spans({file, "--json"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.out, Line("a", 0, 1));
    EXPECT_EQ(result.err, "qv_spans: 8 line(s) are no spans and were left out\n");
}

TEST_F(QvSpans, WhatAFileHoldsCannotSteerTheTerminal) {
    Json::Value span = SampleSpan("a", kBegin, kBegin, "\x1b[2J", "\n", "\r500", "x\x1b]0;title\x07");
    const RunResult result = Spans({Write(Line(span))});
    EXPECT_EQ(Lines(result.out).size(), 3U) << result.out;
    EXPECT_THAT(result.out, AllOf(Not(HasSubstr("\x1b")), Not(HasSubstr("\r")), Not(HasSubstr("\x07"))));
}

TEST_F(QvSpans, TimesFarOutDoNoHarm) {
    std::string text;
    for (const Json::Int64 time :
         {Json::Int64(0), std::numeric_limits<Json::Int64>::max(), Json::Int64(-5)}) {
        text += Line(SampleSpan("a", time, time));
        text += Line(SampleSpan("a", time, 0));
    }
    EXPECT_EQ(Spans({Write(text)}).code, 0);
}

TEST_F(QvSpans, FindsTheFileOfTheConfiguration) {
    config = dir.Write("agent.toml", "[platform]\nlog_dir = 'log'\n");
    dir.Write("log/callchain.jsonl", Line("a", 0, 1));
    EXPECT_EQ(Spans({"--json"}).out, Line("a", 0, 1));
}

TEST_F(QvSpans, WhatCannotBeReadIsTold) {
    const RunResult missing = Spans({dir.File("none.jsonl")});
    EXPECT_EQ(missing.code, 2);
    EXPECT_THAT(missing.err,
                AllOf(HasSubstr("none.jsonl can't be read: No such file"), HasSubstr("call_chain")));
    EXPECT_EQ(Spans({dir.str()}).code, 2);
    EXPECT_EQ(Spans({}).code, 2);
    EXPECT_NE(Spans({"x", "--width", "10"}).code, 0);
}

TEST_F(QvSpans, ColoursStandOnATerminalAlone) {
    const std::string file = Write(Line("a", 0, 1, "10.0.0.1", "ping", "500"));
    EXPECT_THAT(Spans({file}).out, Not(HasSubstr("\x1b")));
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    ASSERT_GE(child, 0);
    if (child == 0) {
        execl(QV_SPANS_TOOL, QV_SPANS_TOOL, file.c_str(), nullptr);
        _exit(127);
    }
    std::string shown;
    char chunk[512];
    for (ssize_t got = 0; (got = read(terminal, chunk, sizeof chunk)) > 0;) {
        shown.append(chunk, static_cast<std::size_t>(got));
    }
    close(terminal);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_THAT(shown, HasSubstr("\x1b[31m500\x1b[0m"));
}

TEST(SpanTimeline, TellsDurationsInTheUnitThatFits) {
    EXPECT_EQ(qv_tools::Duration(0), "0 ms");
    EXPECT_EQ(qv_tools::Duration(999), "999 ms");
    EXPECT_EQ(qv_tools::Duration(1000), "1.00 s");
    EXPECT_EQ(qv_tools::Duration(59999), "59.99 s");
    EXPECT_EQ(qv_tools::Duration(60000), "1 min 00 s");
    EXPECT_EQ(qv_tools::Duration(3725000), "1 h 02 min");
}

TEST(SpanTimeline, FillsColumnsOnEitherSideAndCutsNothing) {
    EXPECT_EQ(qv_tools::Padded("ab", 4), "ab  ");
    EXPECT_EQ(qv_tools::Padded("ab", 4, true), "  ab");
    EXPECT_EQ(qv_tools::Padded("abcde", 4), "abcde");
}
