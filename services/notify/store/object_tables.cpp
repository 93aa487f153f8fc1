#include "services/notify/store/object_tables.h"

namespace qv_notify {

ObjectTables::ObjectTables(Database& database)
    : m_database(database),
      m_put(database,
            "INSERT INTO objects(path, description) VALUES(?,?) "
            "ON CONFLICT(path) DO UPDATE SET description = excluded.description"),
      m_all(database, "SELECT path, description FROM objects ORDER BY path"),
      m_id(database, "SELECT id FROM objects WHERE path = ?"),
      // All that begins with the path and a slash; the next character after the slash is the zero.
      m_below(database, "SELECT id FROM objects WHERE path = ?1 OR (path > ?1 || '/' AND path < ?1 || '0')"),
      m_erase(database, "DELETE FROM objects WHERE id = ?"),
      m_reserved(database, "SELECT reserved FROM counters WHERE name = ?"),
      m_reserve(database,
                "INSERT INTO counters VALUES(?,?) ON CONFLICT(name) DO UPDATE SET reserved = "
                "excluded.reserved"),
      m_take_mark(database, "DELETE FROM counters WHERE name = ?") {}

void ObjectTables::Put(const std::string& path, const std::string& description) {
    Run(m_put).Text(path).Text(description).Finish();
}

std::vector<StoredObject> ObjectTables::All() {
    std::vector<StoredObject> objects;
    Run run(m_all);
    while (run.Next()) {
        objects.push_back({run.StringAt(0), run.StringAt(1)});
    }
    return objects;
}

std::int64_t ObjectTables::IdOf(const std::string& path) {
    const auto found = m_ids.find(path);
    if (found != m_ids.end()) {
        return found->second;
    }
    Run run(m_id);
    if (!run.Text(path).Next()) {
        return 0;
    }
    return m_ids[path] = run.NumberAt(0);
}

std::vector<std::int64_t> ObjectTables::IdsBelow(const std::string& path) {
    std::vector<std::int64_t> ids;
    Run run(m_below);
    run.Text(path);
    while (run.Next()) {
        ids.push_back(run.NumberAt(0));
    }
    return ids;
}

void ObjectTables::Erase(const std::vector<std::int64_t>& ids) {
    m_ids.clear();
    for (const std::int64_t id : ids) {
        Run(m_erase).Number(id).Finish();
    }
}

std::int64_t ObjectTables::NextNumber(const std::string& counter, std::int64_t block) {
    const auto known = m_numbers.find(counter);
    Numbers numbers;
    if (known != m_numbers.end()) {
        numbers = known->second;
    } else {
        numbers.reserved = LastReserved(counter);
        numbers.next = numbers.reserved + 1;
    }
    if (numbers.next > numbers.reserved) {
        numbers.reserved += block;
        Run(m_reserve).Text(counter).Number(numbers.reserved).Finish();
    }
    const std::int64_t number = numbers.next++;
    m_numbers[counter] = numbers;
    return number;
}

std::int64_t ObjectTables::LastReserved(const std::string& counter) {
    Run run(m_reserved);
    return run.Text(counter).Next() ? run.NumberAt(0) : 0;
}

// Marks are kept among the counters.
void ObjectTables::SetMark(const std::string& name) {
    Run(m_reserve).Text(name).Number(1).Finish();
}

bool ObjectTables::TakeMark(const std::string& name) {
    Run(m_take_mark).Text(name).Finish();
    return m_database.Changes() > 0;
}

void ObjectTables::Forget() {
    m_ids.clear();
    m_numbers.clear();
}

}  // namespace qv_notify
