#include "services/notify/store/checkpointer.h"

#include <memory>
#include <utility>

#include "orb/all_signals_blocked.h"
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

}  // namespace

Checkpointer::Checkpointer(std::string path) : m_path(std::move(path)) {
    const qv_orb::AllSignalsBlocked blocked;
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
