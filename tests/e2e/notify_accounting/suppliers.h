// Threads that push numbered events, over every end of the service.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/notification/notify_client.h"

namespace qv_accounting {

/// Each thread pushes its events in order, all by the same proxy, and pushes one again whose answer it did
/// not get, as far as they are allowed to. One thread uses it.
class Suppliers {
  public:
    /// `events` for all threads together. Nothing is allowed yet.
    Suppliers(CosNotifyChannelAdmin::SupplierAdmin_ptr admin, std::size_t threads, std::int32_t events);
    /// Stops what is left.
    ~Suppliers();
    Suppliers(const Suppliers&) = delete;
    Suppliers& operator=(const Suppliers&) = delete;

    /// Lets that many be pushed, of all threads together; never takes back what was allowed.
    void Allow(std::int64_t count);
    /// Waits until that many have been taken by the service, of all threads together; false when they make no
    /// progress for too long or have failed.
    bool WaitForTaken(std::int64_t count);
    std::int64_t Taken() const { return m_taken.load(); }
    /// How many events of a thread have been taken. The next one may have been, too.
    std::int32_t TakenOf(std::size_t thread) const { return m_threads[thread]->taken.load(); }
    std::size_t Threads() const { return m_threads.size(); }

    /// No event is under way from now on, until GoOn.
    void Pause();
    void GoOn();

    /// Pushes that failed so that the service may have the event.
    std::int64_t AnswersLost() const { return m_answers_lost.load(); }
    /// What no supplier should have to see; empty when nothing.
    std::string Failure() const;

  private:
    struct One {
        std::atomic<std::int32_t> taken{0};
        std::thread thread;
    };

    void Work(std::size_t index, std::int32_t events);
    bool PushUntilTaken(const CosNotification::StructuredEvent& event);
    bool BeginPush();
    void EndPush();
    void Fail(const std::string& reason);

    const PortableServer::Servant_var<qv_test::RecordingSupplier> m_supplier;
    std::vector<std::unique_ptr<One>> m_threads;
    std::atomic<std::int64_t> m_taken{0};
    std::atomic<std::int64_t> m_answers_lost{0};
    std::atomic<bool> m_stopped{false};

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_paused = false;
    std::int64_t m_allowed = 0;
    std::int64_t m_begun = 0;
    std::size_t m_pushing = 0;
    std::string m_failure;
};

}  // namespace qv_accounting
