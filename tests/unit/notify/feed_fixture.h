// A feed with a consumer that does what a test tells it.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "services/notify/delivery/feed.h"
#include "tests/support/wait_for.h"

namespace qv_notify_test {

using Sequences = std::vector<std::int64_t>;

inline qv_notify::CallOutcome Failure(qv_notify::CallFailure failure, bool in_doubt = false) {
    qv_notify::CallOutcome outcome;
    outcome.failed = true;
    outcome.failure = failure;
    outcome.in_doubt = in_doubt;
    outcome.reason = "told to fail";
    return outcome;
}

/// An event; the type's name is its number, too.
inline qv_notify::EventPtr EventNumber(std::int64_t sequence, bool kept = true, std::int16_t priority = 0) {
    auto event = std::make_shared<qv_notify::Event>();
    event->body.header.fixed_header.event_type.type_name = std::to_string(sequence).c_str();
    event->sequence = sequence;
    event->kept = kept;
    event->priority = priority;
    event->arrived = std::chrono::system_clock::now();
    return event;
}

/// Any thread may call.
class FakePort : public qv_notify::ConsumerPort {
  public:
    /// What a push of that event, or (with 0) an announcement, ends with; may block.
    using Answer = std::function<qv_notify::CallOutcome(std::int64_t sequence)>;

    void AnswerWith(Answer answer) {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_answer = std::move(answer);
    }
    qv_notify::CallOutcome Push(const CosNotification::StructuredEvent& event) override {
        const std::string name = event.header.fixed_header.event_type.type_name.in();
        return Answered(std::stoll(name), name);
    }
    qv_notify::CallOutcome OfferChange(const CosNotification::EventTypeSeq& added,
                                       const CosNotification::EventTypeSeq& removed) override {
        return Answered(0, NamesOf("+", added) + NamesOf("-", removed));
    }
    std::string Peer() const override { return "10.0.0.7:4711"; }

    /// All calls that were begun, and those that ended well.
    std::vector<std::string> Tried() const { return Get(m_tried); }
    std::vector<std::string> Got() const { return Get(m_got); }
    bool WaitForGot(std::size_t count) const {
        return qv_test::WaitFor([&] { return Got().size() >= count; });
    }

  private:
    qv_notify::CallOutcome Answered(std::int64_t sequence, const std::string& name) {
        Answer answer;
        {
            const std::lock_guard<std::mutex> guard(m_mutex);
            m_tried.push_back(name);
            answer = m_answer;
        }
        const qv_notify::CallOutcome outcome = answer ? answer(sequence) : qv_notify::CallOutcome{};
        const std::lock_guard<std::mutex> guard(m_mutex);
        if (!outcome.failed) {
            m_got.push_back(name);
        }
        return outcome;
    }
    static std::string NamesOf(const std::string& sign, const CosNotification::EventTypeSeq& types) {
        std::string names;
        for (CORBA::ULong i = 0; i < types.length(); ++i) {
            names += sign + types[i].type_name.in();
        }
        return names;
    }
    std::vector<std::string> Get(const std::vector<std::string>& list) const {
        const std::lock_guard<std::mutex> guard(m_mutex);
        return list;
    }

    mutable std::mutex m_mutex;
    Answer m_answer;
    std::vector<std::string> m_tried;
    std::vector<std::string> m_got;
};

class FeedTest : public testing::Test {
  protected:
    FeedTest() {
        policy.order = qv_notify::Order::kFifo;
        policy.discard = qv_notify::Discard::kFifo;
        retry.first_pause = std::chrono::milliseconds(5);
        retry.longest_pause = std::chrono::milliseconds(20);
    }
    ~FeedTest() override { pool.Stop(); }

    std::shared_ptr<qv_notify::Feed> MakeFeed(const std::string& path = "c1/ca0/p1") {
        qv_notify::Feed::Surroundings around;
        around.pool = &pool;
        around.log = &log;
        around.done = [this](const Sequences& sequences) {
            const std::lock_guard<std::mutex> guard(mutex);
            done.insert(done.end(), sequences.begin(), sequences.end());
        };
        around.gone = [this] {
            const std::lock_guard<std::mutex> guard(mutex);
            ++gone;
            return gone >= gone_needed;
        };
        return std::make_shared<qv_notify::Feed>(path, policy, retry, std::move(around));
    }
    static void AddFromTo(qv_notify::Feed& feed, std::int64_t first, std::int64_t last) {
        for (std::int64_t sequence = first; sequence <= last; ++sequence) {
            feed.Add(EventNumber(sequence));
        }
    }
    static std::vector<std::string> Names(std::int64_t first, std::int64_t last) {
        std::vector<std::string> names;
        for (std::int64_t number = first; number <= last; ++number) {
            names.push_back(std::to_string(number));
        }
        return names;
    }
    Sequences Done() {
        const std::lock_guard<std::mutex> guard(mutex);
        return done;
    }
    int Gone() {
        const std::lock_guard<std::mutex> guard(mutex);
        return gone;
    }
    /// How many lines of the log hold that text.
    std::size_t Told(const std::string& text) {
        const std::lock_guard<std::mutex> guard(mutex);
        std::size_t told = 0;
        for (const std::string& line : lines) {
            told += line.find(text) != std::string::npos ? 1 : 0;
        }
        return told;
    }
    std::string AllTold() {
        const std::lock_guard<std::mutex> guard(mutex);
        std::string all;
        for (const std::string& line : lines) {
            all += line + "\n";
        }
        return all;
    }

    qv_notify::QueuePolicy policy;
    qv_notify::RetryPolicy retry;
    std::mutex mutex;
    Sequences done;
    int gone = 0;
    int gone_needed = 1;  ///< so often the feed has to tell before its proxy is ended
    std::vector<std::string> lines;
    qv_notify::OperatorLog log{[this](const std::string& line) {
        const std::lock_guard<std::mutex> guard(mutex);
        lines.push_back(line);
    }};
    const std::shared_ptr<FakePort> port = std::make_shared<FakePort>();
    qv_notify::WorkPool pool{4};
};

}  // namespace qv_notify_test
