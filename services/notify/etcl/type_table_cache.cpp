#include "services/notify/etcl/type_table_cache.h"

#include <array>
#include <functional>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <string_view>

#include "orb/value_access.h"

namespace qv_notify::etcl {

namespace {

constexpr std::size_t kMaxTables = 1024;
constexpr std::size_t kMaxKeptTypeCode = 16384;  // bytes

/// Tables by the bytes of the TypeCode: a received event has TypeCode objects of its own. When the cache is
/// full it forgets everything, so that types that came once don't hold their places for good. Any thread may
/// use it.
class TableCache {
  public:
    TypeTablePtr Find(std::string_view type) const {
        std::shared_lock<std::shared_mutex> lock(m_mutex);
        const auto found = m_tables.find(type);
        return found == m_tables.end() ? nullptr : found->second;
    }

    void Keep(std::string_view type, const TypeTablePtr& table) {
        std::lock_guard<std::shared_mutex> lock(m_mutex);
        if (m_tables.size() >= kMaxTables) {
            m_tables.clear();
        }
        m_tables.emplace(type, table);
    }

  private:
    mutable std::shared_mutex m_mutex;
    std::map<std::string, TypeTablePtr, std::less<>> m_tables;
};

/// Never destroyed: events may still be on their way while the process ends.
TableCache& Cache() {
    static auto* const cache = new TableCache;
    return *cache;
}

TypeTablePtr TableOfBytes(std::string_view type, CdrReader reader) {
    const bool worth_keeping = type.size() <= kMaxKeptTypeCode;
    if (worth_keeping) {
        if (TypeTablePtr kept = Cache().Find(type)) {
            return kept;
        }
    }
    TypeTablePtr table = TypeTable::Read(reader);
    if (worth_keeping) {
        Cache().Keep(type, table);
    }
    return table;
}

/// The tables that a thread used last, by the address of the TypeCode: an event meets one constraint after
/// the other. The references keep other TypeCodes from taking the addresses.
class RecentTables {
  public:
    TypeTablePtr Find(CORBA::TypeCode_ptr type) const {
        for (const Entry& entry : m_entries) {
            if (entry.table != nullptr && entry.type.in() == type) {
                return entry.table;
            }
        }
        return nullptr;
    }

    void Keep(CORBA::TypeCode_ptr type, const TypeTablePtr& table) {
        Entry& entry = m_entries[m_next++ % m_entries.size()];
        entry.type = CORBA::TypeCode::_duplicate(type);
        entry.table = table;
    }

  private:
    struct Entry {
        CORBA::TypeCode_var type;
        TypeTablePtr table;
    };

    std::array<Entry, 4> m_entries;
    std::size_t m_next = 0;
};

}  // namespace

TypeTablePtr TableOf(CORBA::TypeCode_ptr type) {
    thread_local RecentTables recent;
    if (TypeTablePtr table = recent.Find(type)) {
        return table;
    }
    const std::string bytes = qv_orb::TypeCodeBytes(type);
    TypeTablePtr table = TableOfBytes(bytes, CdrReader(bytes.data(), bytes.size()));
    recent.Keep(type, table);
    return table;
}

TypeTablePtr TableOfNextType(CdrReader& reader) {
    const CdrReader type = reader;
    return TableOfBytes(SkipTypeCode(reader), type);
}

}  // namespace qv_notify::etcl
