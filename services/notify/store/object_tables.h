#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "services/notify/store/database.h"
#include "services/notify/store/stored.h"

namespace qv_notify {

/// The objects of a store and its counters. Each function is part of a transaction that the caller has begun;
/// when that is taken back, Forget has to follow. One thread at a time uses it.
class ObjectTables {
  public:
    explicit ObjectTables(Database& database);

    void Put(const std::string& path, const std::string& description);
    std::vector<StoredObject> All();
    /// The number that stands for a path in the other tables; above 0, or 0 when there is no such object.
    std::int64_t IdOf(const std::string& path);
    /// The object and all below it.
    std::vector<std::int64_t> IdsBelow(const std::string& path);
    /// Removes these objects only.
    void Erase(const std::vector<std::int64_t>& ids);

    /// The next of the numbers that were reserved, a block of them at a time.
    std::int64_t NextNumber(const std::string& counter, std::int64_t block);

    /// A mark is there or not.
    void SetMark(const std::string& name);
    /// Whether it was there; it isn't any more.
    bool TakeMark(const std::string& name);

    /// Drops what is remembered of the tables.
    void Forget();

  private:
    struct Numbers {
        std::int64_t next = 1;
        std::int64_t reserved = 0;  // the last number of the block
    };

    std::int64_t LastReserved(const std::string& counter);

    Database& m_database;
    Statement m_put;
    Statement m_all;
    Statement m_id;
    Statement m_below;
    Statement m_erase;
    Statement m_reserved;
    Statement m_reserve;
    Statement m_take_mark;
    std::unordered_map<std::string, std::int64_t> m_ids;
    std::unordered_map<std::string, Numbers> m_numbers;
};

}  // namespace qv_notify
