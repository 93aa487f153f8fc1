#include "standalone/span_recorder.h"

#include <json/value.h>

#include <limits>
#include <new>
#include <thread>
#include <utility>

#include "standalone/fork_count.h"
#include "standalone/span_line.h"

namespace qv_standalone {
namespace {

constexpr std::chrono::minutes kBetweenReports{1};
constexpr std::size_t kUsualLength = 1024;

std::unique_ptr<SpanCollector> MakeCollector(const SpanCollectorOptions& options,
                                             const SpanRecorder::Tell& tell,
                                             std::function<SpanRecorder::Clock::time_point()> now) {
    if (options.url.empty()) {
        return nullptr;
    }
    try {
        return std::make_unique<SpanCollector>(options, tell, std::move(now));
    } catch (const std::exception& error) {
        tell(std::string("call_chain_collector can't be used (") + error.what() +
             "); spans go to callchain.jsonl alone");
        return nullptr;
    }
}

bool AppendSpan(const Json::Value& span, const Json::Value& extra, std::string& line) {
    if (extra.isNull()) {
        return AppendCompact(span, line);
    }
    Json::Value both = span;
    both["extra"] = extra;
    return AppendCompact(both, line);
}

}  // namespace

SpanRecorder::SpanRecorder(const SpanRecorderOptions& options, Tell tell,
                           std::function<Clock::time_point()> now)
    : m_tell(std::move(tell)),
      m_forks(ForkCount()),
      m_gather(options.gather),
      m_queue(options.queue),
      m_file(options.file, m_tell, now),
      m_dropped(kBetweenReports, now,
                [this](std::uint64_t spans) {
                    m_tell(std::to_string(spans) +
                           " spans were dropped, because they come faster than they can be written, or are "
                           "too long; call_chain_queue sets how many may wait");
                }),
      m_collector(MakeCollector(options.collector, m_tell, std::move(now))) {}

SpanRecorder::~SpanRecorder() {
    Stop(std::chrono::milliseconds(0));
}

int SpanRecorder::Report(const Json::Value& span, const Json::Value& extra) noexcept {
    if (m_forks != ForkCount() || !span.isObject()) {
        return -1;
    }
    try {
        std::call_once(m_started, [this] { Start(); });
        std::string line;
        line.reserve(kUsualLength);
        if (AppendSpan(span, extra, line) && line.size() <= kLongest) {
            return m_queue.Push(std::move(line)) ? 0 : -1;
        }
    } catch (...) {
        // No memory or no thread: the span is dropped like those that find no room.
    }
    m_queue.CountDropped(1);
    return -1;
}

void SpanRecorder::Start() {
    if (m_collector && !m_collector->Started()) {
        m_collector->Start();
    }
    m_worker.Start("qv-span-file", [this] { Run(); });
}

void SpanRecorder::Run() {
    while (!m_queue.Finished()) {
        try {
            auto lines = m_queue.Take(std::numeric_limits<std::size_t>::max(), kBetweenReports, m_gather);
            m_file.Write(lines);
            if (m_collector) {
                m_collector->HandOver(std::move(lines));
            }
        } catch (const std::bad_alloc&) {
            std::this_thread::sleep_for(m_gather);  // what is in the queue stays there
        }
        m_dropped.Add(m_queue.TakeDropped());
    }
    m_dropped.TellNow();
}

bool SpanRecorder::Stop(std::chrono::milliseconds limit) {
    if (m_forks != ForkCount()) {
        return true;
    }
    const Clock::time_point end = Clock::now() + limit;
    m_queue.Close();
    std::call_once(m_started, [] {});  // from now on nobody starts the threads
    const bool written = m_worker.WaitForEnd(end);
    if (!m_collector) {
        return written;
    }
    m_collector->Close(end);
    // A little more for the thread to come back from the connection that was cut off.
    return m_collector->WaitForEnd(end + std::chrono::seconds(1)) && written;
}

}  // namespace qv_standalone
