#include "standalone/span_collector.h"

#include <json/reader.h>
#include <json/writer.h>

#include <algorithm>
#include <utility>

#include "standalone/zipkin_span.h"

namespace qv_standalone {
namespace {

constexpr std::chrono::minutes kBetweenReports{1};

/// The array that is sent, with how many of the spans are in it.
std::pair<std::string, std::size_t> Body(const std::vector<std::string>& spans,
                                         const std::string& component) {
    Json::Value list(Json::arrayValue);
    const Json::CharReaderBuilder builder;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    for (const std::string& text : spans) {
        try {
            Json::Value span;
            if (reader->parse(text.data(), text.data() + text.size(), &span, nullptr)) {
                if (Json::Value zipkin = ZipkinSpan(span, component); !zipkin.isNull()) {
                    list.append(std::move(zipkin));
                }
            }
        } catch (const Json::Exception&) {
            // Of another shape than the library's; it counts as dropped.
        }
    }
    Json::StreamWriterBuilder compact;
    compact["indentation"] = "";
    return {Json::writeString(compact, list), list.size()};
}

}  // namespace

SpanCollector::SpanCollector(SpanCollectorOptions options, Tell tell, std::function<Clock::time_point()> now)
    : m_options(std::move(options)),
      m_tell(std::move(tell)),
      m_now(std::move(now)),
      m_post(m_options.url),
      m_queue(m_options.queue),
      m_dropped(kBetweenReports, m_now, [this](std::uint64_t spans) {
          m_tell(std::to_string(spans) + " spans were not brought to the collector " + m_post.ShownUrl() +
                 "; callchain.jsonl has them");
      }) {}

SpanCollector::~SpanCollector() {
    Close(Clock::now());
}

void SpanCollector::Start() {
    m_worker.Start("qv-span-post", [this] { Run(); });
}

void SpanCollector::HandOver(std::vector<std::string>&& spans) {
    for (std::string& span : spans) {
        m_queue.Push(std::move(span));
    }
}

void SpanCollector::Close(Clock::time_point limit) {
    {
        std::lock_guard<std::mutex> guard(m_lock);
        m_closing = true;
    }
    m_queue.Close();
    m_post.EndBy(limit);
    m_wake.notify_all();
}

bool SpanCollector::Closing() {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_closing;
}

void SpanCollector::Run() {
    while (!m_queue.Finished()) {
        const auto spans = m_queue.Take(m_options.batch, kBetweenReports, m_options.gather);
        if (!spans.empty()) {
            SendBatch(spans);
        }
        m_dropped.Add(m_queue.TakeDropped());
    }
    m_dropped.TellNow();
}

void SpanCollector::SendBatch(const std::vector<std::string>& spans) {
    try {
        const auto [body, count] = Body(spans, m_options.component);
        m_dropped.Add(spans.size() - count);
        if (count > 0 && !Deliver(body)) {
            m_dropped.Add(count);
        }
    } catch (const std::bad_alloc&) {
        m_queue.CountDropped(spans.size());
    }
}

bool SpanCollector::Deliver(const std::string& body) {
    for (unsigned tried = 0; tried < m_options.tries; ++tried) {
        if (m_failing && Closing()) {
            return false;  // the little time left is for a collector that answers
        }
        const PostResult result = m_post.Post(body, m_options.timeout);
        if (result.Delivered()) {
            NoteSuccess();
            return true;
        }
        NoteFailure(result);
        if (!result.WorthRetrying() || !Pause()) {
            return false;
        }
    }
    return false;
}

/// After a failure: sleeps for a while that grows. False when there is no time for it any more.
bool SpanCollector::Pause() {
    const unsigned doublings = std::min(m_failures - 1, 20U);
    const auto pause = std::min<std::chrono::milliseconds>(m_options.longest_pause,
                                                           m_options.first_pause * (1LL << doublings));
    std::unique_lock<std::mutex> lock(m_lock);
    return !m_wake.wait_for(lock, pause, [this] { return m_closing; });
}

void SpanCollector::NoteFailure(const PostResult& result) {
    ++m_failures;
    if (m_failing || (m_told && m_now() - m_toldAt < kBetweenReports)) {
        return;
    }
    m_failing = true;
    m_told = true;
    m_toldAt = m_now();
    m_tell("the collector " + m_post.ShownUrl() + " takes no spans (" + result.failure +
           "); they wait for it as far as call_chain_queue allows, and callchain.jsonl has them all");
}

void SpanCollector::NoteSuccess() {
    m_failures = 0;
    if (std::exchange(m_failing, false)) {
        m_tell("the collector " + m_post.ShownUrl() + " takes spans again");
    }
}

}  // namespace qv_standalone
