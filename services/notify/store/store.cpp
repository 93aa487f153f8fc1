#include "services/notify/store/store.h"

#include <algorithm>
#include <utility>

#include "services/notify/store/checkpointer.h"
#include "services/notify/store/database.h"
#include "services/notify/store/event_tables.h"
#include "services/notify/store/group_commit.h"
#include "services/notify/store/object_tables.h"
#include "services/notify/store/store_file.h"
#include "services/notify/store/undone.h"

namespace qv_notify {
namespace {

const std::string kOrderlyEnd = "/ended";  // no path begins with a slash
constexpr std::int64_t kNumberBlock = 16;
constexpr int kManyLogPages = 1000;   // 4 MiB; then the checkpointer sets to work
constexpr int kMostLogPages = 16000;  // 64 MiB; then the writer waits for it, so that the log gets cleared

std::int64_t Microseconds(Time time) {
    return std::chrono::duration_cast<std::chrono::microseconds>(time.time_since_epoch()).count();
}

}  // namespace

class Store::Impl {
  public:
    explicit Impl(std::string path)
        : m_path(std::move(path)),
          m_lock(m_path),
          m_database(OpenStoreFile(m_path)),
          m_tables(Prepare()),
          m_checkpointer(m_path),
          m_group([this](const auto& operations) { CarryOut(operations); }) {}

    template <class Operation>
    void Run(const Operation& operation) {
        m_group.Run([this, &operation] { operation(m_tables->objects, m_tables->events); });
    }

    /// Writes down what consumers are done with, together with what failed before. Throws as Run does, and
    /// keeps all of it then.
    void WriteDone(const std::string& consumer, const std::vector<std::int64_t>& sequences);

  private:
    struct Tables {
        explicit Tables(Database& database)
            : objects(database),
              events(database, objects),
              begin(database, "BEGIN IMMEDIATE"),
              commit(database, "COMMIT") {}
        ObjectTables objects;
        EventTables events;
        Statement begin;
        Statement commit;
    };

    std::unique_ptr<Tables> Prepare();
    void CarryOut(const std::vector<const GroupCommit::Operation*>& operations);
    void TakeBack() noexcept;
    void KeepLogShort();

    const std::string m_path;
    const StoreLock m_lock;
    const std::unique_ptr<Database> m_database;
    const std::unique_ptr<Tables> m_tables;
    int m_pages_at_wake = 0;  // in the log, when the checkpointer was last woken
    Checkpointer m_checkpointer;
    GroupCommit m_group;
    Undone m_undone;
};

std::unique_ptr<Store::Impl::Tables> Store::Impl::Prepare() {
    try {
        return std::make_unique<Tables>(*m_database);
    } catch (const DatabaseError& error) {
        throw StoreError(Explain(m_path, "can't be opened", error));
    }
}

void Store::Impl::CarryOut(const std::vector<const GroupCommit::Operation*>& operations) {
    try {
        qv_notify::Run(m_tables->begin).Finish();
        for (const GroupCommit::Operation* operation : operations) {
            (*operation)();
        }
        qv_notify::Run(m_tables->commit).Finish();
    } catch (const DatabaseError& error) {
        TakeBack();
        throw StoreError(Explain(m_path, "can't be used", error));
    } catch (...) {
        TakeBack();
        throw;
    }
    KeepLogShort();
}

void Store::Impl::WriteDone(const std::string& consumer, const std::vector<std::int64_t>& sequences) {
    Undone::Sequences all = m_undone.Take();
    if (!sequences.empty()) {
        std::vector<std::int64_t>& own = all[consumer];
        own.insert(own.end(), sequences.begin(), sequences.end());
    }
    if (all.empty()) {
        return;
    }
    try {
        Run([&](ObjectTables&, EventTables& events) {
            for (const auto& [path, done] : all) {
                events.Done(path, done);
            }
        });
    } catch (...) {
        m_undone.PutBack(std::move(all));
        throw;
    }
}

void Store::Impl::TakeBack() noexcept {
    m_database->RollBack();
    m_tables->objects.Forget();
    m_tables->events.Forget();
}

void Store::Impl::KeepLogShort() {
    const int pages = m_database->LogPages();
    m_pages_at_wake = pages < m_pages_at_wake ? 0 : m_pages_at_wake;  // the log was begun anew
    if (pages >= kMostLogPages) {
        m_database->Checkpoint();
    } else if (pages - m_pages_at_wake >= kManyLogPages) {
        m_pages_at_wake = pages;
        m_checkpointer.Wake();
    }
}

Store::Store(const std::string& path) : m_impl(std::make_unique<Impl>(path)) {}

Store::~Store() = default;

void Store::NoteOrderlyEnd() {
    m_impl->WriteDone("", {});
    m_impl->Run([](ObjectTables& objects, EventTables&) { objects.SetMark(kOrderlyEnd); });
}

bool Store::TakeOrderlyEnd() {
    bool taken = false;
    m_impl->Run([&](ObjectTables& objects, EventTables&) { taken = objects.TakeMark(kOrderlyEnd); });
    return taken;
}

void Store::Put(const std::string& path, const std::string& description) {
    m_impl->Run([&](ObjectTables& objects, EventTables&) { objects.Put(path, description); });
}

void Store::Remove(const std::string& path) {
    m_impl->Run([&](ObjectTables& objects, EventTables& events) {
        if (path.find('/') == std::string::npos) {
            events.LeaveChannel(objects.IdOf(path));
        }
        const std::vector<std::int64_t> ids = objects.IdsBelow(path);
        events.Leave(ids);
        objects.Erase(ids);
    });
}

std::vector<StoredObject> Store::Objects() {
    std::vector<StoredObject> all;
    m_impl->Run([&](ObjectTables& objects, EventTables&) { all = objects.All(); });
    return all;
}

std::int64_t Store::NextNumber(const std::string& counter) {
    std::int64_t number = 0;
    m_impl->Run(
        [&](ObjectTables& objects, EventTables&) { number = objects.NextNumber(counter, kNumberBlock); });
    return number;
}

std::int64_t Store::AddEvent(const std::string& channel, const std::string& supplier,
                             const std::string& octets, Time arrived) {
    const std::string digest = DigestOf(octets);
    std::int64_t sequence = 0;
    m_impl->Run([&](ObjectTables&, EventTables& events) {
        sequence = events.Add(channel, supplier, octets, digest, Microseconds(arrived));
    });
    return sequence;
}

void Store::Dispatch(const std::vector<Dispatched>& dispatched) {
    m_impl->Run([&](ObjectTables&, EventTables& events) {
        for (const Dispatched& event : dispatched) {
            events.Dispatch(event);
        }
    });
}

void Store::Done(const std::string& consumer, const std::vector<std::int64_t>& sequences) {
    m_impl->WriteDone(consumer, sequences);
}

std::vector<StoredEvent> Store::Events() {
    std::vector<StoredEvent> all;
    m_impl->Run([&](ObjectTables&, EventTables& events) { all = events.All(); });
    return all;
}

std::vector<EventDigest> Store::LastEventsOf(const std::string& supplier, std::size_t count) {
    std::vector<EventDigest> digests;
    m_impl->Run([&](ObjectTables&, EventTables& events) { digests = events.LastOf(supplier, count); });
    std::reverse(digests.begin(), digests.end());
    return digests;
}

}  // namespace qv_notify
