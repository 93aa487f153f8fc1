#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <string>

namespace qv_standalone {

/// Counts failed logins by user name, of users that don't exist, too. After `max_failures` failures, none of
/// which is older than `lock_time`, the name is locked until `lock_time` after the last. Holds a bounded
/// number of names. Any thread may call any operation.
class Lockout {
  public:
    using Time = std::chrono::steady_clock::time_point;

    Lockout(unsigned max_failures, std::chrono::seconds lock_time)
        : m_max_failures(max_failures), m_lock_time(lock_time) {}

    bool IsLocked(const std::string& user, Time now);
    /// True when this failure locks the name.
    bool Failed(const std::string& user, Time now);
    void Succeeded(const std::string& user);

    std::size_t Names() const;
    static constexpr std::size_t kMostNames = 10000;

  private:
    struct Entry {
        unsigned failures = 0;
        Time last;
    };
    void MakeRoom(Time now);

    const unsigned m_max_failures;
    const std::chrono::seconds m_lock_time;
    mutable std::mutex m_lock;
    std::map<std::string, Entry> m_entries;
};

}  // namespace qv_standalone
