#include "services/notify/store/store_file.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "services/notify/store/store_error.h"

namespace qv_notify {
namespace {

constexpr std::int64_t kApplication = 0x71764E53;  // marks the files of this service among those of SQLite
constexpr std::int64_t kVersion = 1;               // of the tables
constexpr mode_t kOwnerOnly = 0600;                // events are not for everybody

// WAL with "normal" hands each transaction to the system before the call returns, but waits for the disk at
// checkpoints only. A numbered object is never taken for one that has gone.
constexpr const char* kSettings = R"(
PRAGMA journal_mode = WAL;
PRAGMA synchronous = NORMAL;
PRAGMA journal_size_limit = 67108864;
PRAGMA cache_size = -16384;
)";

constexpr const char* kSchema = R"(
BEGIN IMMEDIATE;
CREATE TABLE objects(id INTEGER PRIMARY KEY AUTOINCREMENT, path TEXT NOT NULL UNIQUE, description TEXT NOT NULL);
CREATE TABLE counters(name TEXT PRIMARY KEY, reserved INTEGER NOT NULL) WITHOUT ROWID;
CREATE TABLE events(sequence INTEGER PRIMARY KEY, channel INTEGER NOT NULL, supplier INTEGER NOT NULL,
  arrived INTEGER NOT NULL, digest BLOB NOT NULL, octets BLOB NOT NULL);
CREATE TABLE deliveries(sequence INTEGER NOT NULL, consumer INTEGER NOT NULL, PRIMARY KEY(sequence, consumer))
  WITHOUT ROWID;
CREATE TABLE digests(supplier INTEGER NOT NULL, place INTEGER NOT NULL, sequence INTEGER NOT NULL,
  digest BLOB NOT NULL, PRIMARY KEY(supplier, place)) WITHOUT ROWID;
)";

std::string Reason(int number) {
    return std::generic_category().message(number);
}

std::string Advice(int code) {
    switch (code) {
        case SQLITE_FULL:
            return "Make room on the disk.";
        case SQLITE_CORRUPT:
        case SQLITE_NOTADB:
            return "Put a sound copy in its place, or move it away to begin with an empty one.";
        case SQLITE_READONLY:
        case SQLITE_CANTOPEN:
        case SQLITE_PERM:
        case SQLITE_AUTH:
            return "Let the user of the service write it and its folder.";
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return "End the program that uses it.";
        default:
            return "Look after the disk: it may be full or broken.";
    }
}

/// Makes the file so that nobody else may read it, not even for a moment.
void MakeFile(const std::string& path) {
    const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnerOnly);
    if (fd < 0) {
        const std::string reason = Reason(errno);
        throw StoreError("The store " + path + " can't be opened: " + reason +
                         ". Let the user of the service write it and its folder.");
    }
    close(fd);
}

void CheckWhose(Database& database, const std::string& path) {
    const std::int64_t application = database.QueryNumber("PRAGMA application_id");
    const std::int64_t version = database.QueryNumber("PRAGMA user_version");
    const std::int64_t tables = database.QueryNumber("SELECT count(*) FROM sqlite_master");
    if (application == 0 && version == 0 && tables == 0) {
        return;  // new
    }
    if (application != kApplication) {
        throw StoreError("The file " + path +
                         " is the database of something else. Name another file for the store.");
    }
    if (version > kVersion) {
        throw StoreError("The store " + path + " has the version " + std::to_string(version) +
                         ", and this service knows " + std::to_string(kVersion) +
                         " at most. Start the newer service, or name another file.");
    }
}

void CheckSound(Database& database) {
    const std::string verdict = database.QueryText("PRAGMA quick_check(1)");
    if (verdict != "ok") {
        throw DatabaseError(SQLITE_CORRUPT, verdict);
    }
}

void MakeTables(Database& database) {
    if (database.QueryNumber("PRAGMA user_version") == kVersion) {
        return;
    }
    database.Execute(kSchema);
    database.Execute("PRAGMA application_id = " + std::to_string(kApplication));
    database.Execute("PRAGMA user_version = " + std::to_string(kVersion));
    database.Execute("COMMIT");
}

void Prepare(Database& database, const std::string& path) {
    if (database.IsReadOnly()) {
        throw DatabaseError(SQLITE_READONLY, "it may only be read");
    }
    CheckWhose(database, path);
    chmod(path.c_str(), kOwnerOnly);  // it may be a copy that was brought back
    CheckSound(database);
    database.Execute(kSettings);
    MakeTables(database);
}

}  // namespace

StoreLock::StoreLock(const std::string& store) {
    const std::string path = store + ".lock";
    m_fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnerOnly);
    if (m_fd < 0) {
        const std::string reason = Reason(errno);
        throw StoreError("The file " + path + " can't be opened: " + reason +
                         ". Let the user of the service write it and its folder.");
    }
    if (flock(m_fd, LOCK_EX | LOCK_NB) != 0) {
        const std::string reason = errno == EWOULDBLOCK ? "another process has it open" : Reason(errno);
        close(m_fd);
        throw StoreError("The store " + store + " can't be used: " + reason +
                         ". End that process, or name another file.");
    }
}

StoreLock::~StoreLock() {
    close(m_fd);
}

std::unique_ptr<Database> OpenStoreFile(const std::string& path) {
    MakeFile(path);
    try {
        auto database = std::make_unique<Database>(path);
        Prepare(*database, path);
        return database;
    } catch (const DatabaseError& error) {
        throw StoreError(Explain(path, "can't be opened", error));
    }
}

std::string Explain(const std::string& path, const std::string& what, const DatabaseError& error) {
    return "The store " + path + " " + what + ": " + error.what() + ". " + Advice(error.Code());
}

}  // namespace qv_notify
