// What handing a span over costs the thread of a request, with the stand-alone call chain library below;
// writing the file goes on beside it.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>

#include "platform/call_chain.h"
#include "standalone/span_id.h"
#include "standalone/span_line.h"
#include "standalone/span_recorder.h"
#include "tests/support/sample_span.h"

namespace {

void Lookup(benchmark::State& state) {  // without a configuration file tracing is off
    for (auto _ : state) {
        benchmark::DoNotOptimize(xDENcommon::xDENCallChainInstMgr::Instance("MRB"));
    }
}

void NewId(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(qv_standalone::NewSpanId());
    }
}

void CopyOfSpan(benchmark::State& state) {
    const Json::Value span = qv_test::SampleSpan();
    for (auto _ : state) {
        Json::Value copy = span;
        benchmark::DoNotOptimize(copy);
    }
}

void LineOfSpan(benchmark::State& state) {
    const Json::Value span = qv_test::SampleSpan();
    for (auto _ : state) {
        std::string line;
        line.reserve(1024);
        qv_standalone::AppendCompact(span, line);
        benchmark::DoNotOptimize(line);
    }
}

/// At some 10,000 requests per second, so that the file keeps up; only the call is measured.
void ReportSpan(benchmark::State& state) {
    const std::string path =
        (std::filesystem::temp_directory_path() / ("qv_bench_spans_" + std::to_string(getpid()))).string();
    {
        qv_standalone::SpanRecorderOptions options;
        options.file.path = path + "/callchain.jsonl";
        options.file.max_size = 4 << 20;
        options.file.max_files = 1;
        qv_standalone::SpanRecorder recorder(options, [](const std::string&) {});
        const Json::Value span = qv_test::SampleSpan();
        std::uint64_t dropped = 0;
        for (auto _ : state) {
            const auto begin = std::chrono::steady_clock::now();
            dropped += recorder.Report(span, Json::Value()) == 0 ? 0 : 1;
            const auto end = std::chrono::steady_clock::now();
            state.SetIterationTime(std::chrono::duration<double>(end - begin).count());
            while (std::chrono::steady_clock::now() - begin < std::chrono::microseconds(100)) {
            }
        }
        state.counters["dropped"] = static_cast<double>(dropped);
        recorder.Stop(std::chrono::seconds(10));
    }
    std::filesystem::remove_all(path);
}

BENCHMARK(Lookup);
BENCHMARK(NewId);
BENCHMARK(CopyOfSpan);
BENCHMARK(LineOfSpan);
BENCHMARK(ReportSpan)->UseManualTime()->Iterations(10000);

}  // namespace

BENCHMARK_MAIN();
