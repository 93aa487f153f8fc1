#include "services/notify/store/checkpointer.h"

#include <signal.h>

#include <memory>
#include <utility>

#include "services/notify/store/database.h"

namespace qv_notify {
namespace {

/// Null when the file can't be opened just now.
std::unique_ptr<Database> OpenAgain(const std::string& path) {
    try {
        auto database = std::make_unique<Database>(path);
        database->Execute("PRAGMA synchronous = NORMAL");
        return database;
    } catch (const DatabaseError&) {
        return nullptr;
    }
}

/// A thread of this service's inside leaves the process's signals to the others.
class SignalsBlocked {
  public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

  private:
    sigset_t m_before;
};

}  // namespace

Checkpointer::Checkpointer(std::string path) : m_path(std::move(path)) {
    const SignalsBlocked blocked;
    m_thread = std::thread([this] { Work(); });
}

Checkpointer::~Checkpointer() {
    {
        const std::lock_guard<std::mutex> lock(m_lock);
        m_ending = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void Checkpointer::Wake() {
    {
        const std::lock_guard<std::mutex> lock(m_lock);
        m_wanted = true;
    }
    m_changed.notify_all();
}

void Checkpointer::Work() {
    std::unique_ptr<Database> database;
    std::unique_lock<std::mutex> lock(m_lock);
    while (true) {
        m_changed.wait(lock, [this] { return m_wanted || m_ending; });
        if (m_ending) {
            return;
        }
        m_wanted = false;
        lock.unlock();
        if (!database) {
            database = OpenAgain(m_path);
        }
        if (database) {
            database->Checkpoint();
        }
        lock.lock();
    }
}

}  // namespace qv_notify
