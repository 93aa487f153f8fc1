#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "standalone/http_post.h"
#include "standalone/paced_count.h"
#include "standalone/span_queue.h"
#include "standalone/worker_thread.h"

namespace qv_standalone {

struct SpanCollectorOptions {
    std::string url;
    std::string component = "corba_agent";        ///< service of spans whose name tells none
    std::size_t queue = 10000;                    ///< spans that wait at most
    std::size_t batch = 100;                      ///< spans in one POST at most
    unsigned tries = 5;                           ///< of one batch
    std::chrono::milliseconds timeout{5000};      ///< of one try
    std::chrono::milliseconds first_pause{1000};  ///< after a failed try; doubles with each further one
    std::chrono::milliseconds longest_pause{30000};
    std::chrono::milliseconds gather{500};  ///< how long a span waits for company
};

/// Brings spans to a collector, on a thread of its own, in the form of Zipkin v2. Spans that find the queue
/// full, a batch that failed in all its tries or that the collector refuses, are dropped and counted. That it
/// fails, that it works again and what was dropped is told, each once per minute at most. Any thread may call
/// HandOver.
class SpanCollector {
  public:
    using Clock = std::chrono::steady_clock;
    using Tell = std::function<void(const std::string&)>;

    /// Throws std::runtime_error for a URL that can't be used.
    SpanCollector(SpanCollectorOptions options, Tell tell,
                  std::function<Clock::time_point()> now = Clock::now);
    ~SpanCollector();

    /// Starts the thread; throws std::system_error when there is none to be had.
    void Start();
    bool Started() const { return m_worker.Started(); }

    /// Takes over spans in the form of the file's lines. Never waits for the collector.
    void HandOver(std::vector<std::string>&& spans);

    /// What waits is still sent as far as that succeeds, up to the moment `limit`.
    void Close(Clock::time_point limit);
    /// Whether the thread has ended by `limit`, too.
    bool WaitForEnd(Clock::time_point limit) { return m_worker.WaitForEnd(limit); }

  private:
    void Run();
    void SendBatch(const std::vector<std::string>& spans);
    bool Deliver(const std::string& body);
    void NoteFailure(const PostResult& result);
    void NoteSuccess();
    bool Pause();
    bool Closing();

    const SpanCollectorOptions m_options;
    const Tell m_tell;
    const std::function<Clock::time_point()> m_now;
    HttpPost m_post;
    SpanQueue m_queue;

    std::mutex m_lock;  // guards the two that follow
    std::condition_variable m_wake;
    bool m_closing = false;

    // The thread's own.
    PacedCount m_dropped;
    unsigned m_failures = 0;  // in a row
    bool m_failing = false;   // and the operator knows
    bool m_told = false;
    Clock::time_point m_toldAt;

    WorkerThread m_worker;  // last, so that its thread ends before the rest goes
};

}  // namespace qv_standalone
