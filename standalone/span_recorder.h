#pragma once

#include <json/forwards.h>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "standalone/paced_count.h"
#include "standalone/span_collector.h"
#include "standalone/span_file.h"
#include "standalone/span_queue.h"
#include "standalone/worker_thread.h"

namespace qv_standalone {

struct SpanRecorderOptions {
    SpanFileOptions file;
    std::size_t queue = 10000;              ///< spans that wait for the file at most
    std::chrono::milliseconds gather{200};  ///< how long a span waits for company
    SpanCollectorOptions collector;         ///< an empty URL: none
};

/// Takes finished spans from the threads of requests, and on threads of its own writes them to a file and
/// brings them to a collector. What can't be kept is dropped, counted and told, at most once per minute. Its
/// threads begin with the first span. A forked child has none, so there every span is refused. Any thread may
/// call Report.
class SpanRecorder {
  public:
    using Clock = std::chrono::steady_clock;
    using Tell = std::function<void(const std::string&)>;

    /// A span longer than this, in bytes of its text, is dropped.
    static constexpr std::size_t kLongest = 64UL << 10;

    SpanRecorder(const SpanRecorderOptions& options, Tell tell,
                 std::function<Clock::time_point()> now = Clock::now);
    ~SpanRecorder();
    SpanRecorder(const SpanRecorder&) = delete;
    SpanRecorder& operator=(const SpanRecorder&) = delete;

    /// Keeps a copy of the span, with `extra` as a member of that name unless it is null. Waits for nothing.
    /// 0, or -1 when the span was dropped or isn't an object.
    int Report(const Json::Value& span, const Json::Value& extra) noexcept;

    /// Accepts no more spans, and waits until those accepted are written and sent, no longer than `limit`; a
    /// second longer for the thread that sends, whose connection is cut off then. False when the threads
    /// still run at the end.
    bool Stop(std::chrono::milliseconds limit);

  private:
    void Start();
    void Run();

    const Tell m_tell;
    const unsigned m_forks;  // of this process when the object was made
    const std::chrono::milliseconds m_gather;
    SpanQueue m_queue;
    SpanFile m_file;
    PacedCount m_dropped;
    std::unique_ptr<SpanCollector> m_collector;  // null: none
    std::once_flag m_started;
    WorkerThread m_worker;  // last, so that its thread ends before the rest goes
};

}  // namespace qv_standalone
