#pragma once

#include <tao/ORB.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <set>
#include <thread>
#include <utility>

namespace qv_test {

/// An exception that is neither a user nor a system exception.
class OddException : public CORBA::Exception {
  public:
    void _raise() const override { throw *this; }
    const char* _NP_repoId(int* size) const override {
        static constexpr const char* kId = "IDL:qv.test/Odd:1.0";
        *size = 20;
        return kId;
    }
    void _NP_marshal(cdrStream&) const override {}

  private:
    CORBA::Exception* _NP_duplicate() const override { return new OddException(*this); }
    const char* _NP_typeId() const override { return "OddException"; }
};

/// An ORB whose run() follows a script: each call takes the next step and runs it, and blocks for good, or
/// until shutdown, when there is none left. Has no initial references. Reference-counted; starts with a count
/// of one.
class FakeOrb : public CORBA::ORB {
    template <typename Read>
    auto Locked(Read read) const {
        const std::lock_guard<std::mutex> lock(m_lock);
        return read();
    }

  public:
    FakeOrb() : CORBA::ORB(0) {}

    void Then(std::function<void()> step) { m_steps.push_back(std::move(step)); }

    /// The next destroy() runs `step`.
    void OnDestroy(std::function<void()> step) { m_destroy_step = std::move(step); }

    void run() override {
        std::unique_lock<std::mutex> lock(m_lock);
        m_runners.insert(std::this_thread::get_id());
        ++m_calls;
        m_changed.notify_all();
        if (!m_steps.empty()) {
            const std::function<void()> step = std::move(m_steps.front());
            m_steps.pop_front();
            lock.unlock();
            step();
            return;
        }
        ++m_blocked;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_shutdown; });
        --m_blocked;
    }

    void shutdown(CORBA::Boolean wait) override {
        const std::lock_guard<std::mutex> lock(m_lock);
        m_shutdown = true;
        m_waited = wait;
        m_changed.notify_all();
    }

    void destroy() override {
        std::unique_lock<std::mutex> lock(m_lock);
        ++m_destroyed;
        const std::function<void()> step = std::exchange(m_destroy_step, nullptr);
        lock.unlock();
        if (step) {
            step();
        }
    }

    /// Waits until `count` threads block in run(); false after 30 seconds.
    bool AwaitBlocked(unsigned count) {
        std::unique_lock<std::mutex> lock(m_lock);
        return m_changed.wait_for(lock, std::chrono::seconds(30), [&] { return m_blocked >= count; });
    }
    std::size_t Runners() const {
        return Locked([this] { return m_runners.size(); });
    }
    unsigned Calls() const {
        return Locked([this] { return m_calls; });
    }
    bool IsShutDown() const {
        return Locked([this] { return m_shutdown; });
    }
    bool WaitedForCompletion() const {
        return Locked([this] { return m_waited; });
    }
    unsigned Destroyed() const {
        return Locked([this] { return m_destroyed; });
    }
    int References() const {
        return Locked([this] { return m_references; });
    }

    char* id() override { return CORBA::string_dup("fake"); }
    char* object_to_string(CORBA::Object_ptr) override { throw CORBA::NO_IMPLEMENT(); }
    CORBA::Object_ptr string_to_object(const char*) override { throw CORBA::NO_IMPLEMENT(); }
    ObjectIdList* list_initial_services() override { throw CORBA::NO_IMPLEMENT(); }
    CORBA::Object_ptr resolve_initial_references(const char*) override { return CORBA::Object::_nil(); }
    CORBA::Boolean work_pending() override { return false; }
    void perform_work() override {}
    void register_initial_reference(const char*, CORBA::Object_ptr) override { throw CORBA::NO_IMPLEMENT(); }

    void _NP_incrRefCount() override {
        const std::lock_guard<std::mutex> lock(m_lock);
        ++m_references;
    }
    void _NP_decrRefCount() override {
        std::unique_lock<std::mutex> lock(m_lock);
        if (--m_references == 0) {
            lock.unlock();
            delete this;
        }
    }

  private:
    mutable std::mutex m_lock;
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_steps;
    std::function<void()> m_destroy_step;
    std::set<std::thread::id> m_runners;
    unsigned m_calls = 0;
    unsigned m_blocked = 0;
    unsigned m_destroyed = 0;
    int m_references = 1;
    bool m_shutdown = false;
    bool m_waited = true;
};

}  // namespace qv_test
