// The filters that an admin or a proxy uses.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "services/notify/channel/filter_body.h"

namespace qv_notify {

/// Filters under the ids that they got here. Not thread-safe.
class FilterLinks {
  public:
    using FindFilter = std::function<std::shared_ptr<const FilterBody>(std::int32_t id)>;

    std::int32_t Add(std::shared_ptr<const FilterBody> filter);
    /// False when there is no such id.
    bool Remove(std::int32_t id);
    void RemoveAll() { m_filters.clear(); }
    /// Null when there is no such id.
    std::shared_ptr<const FilterBody> Find(std::int32_t id) const;
    std::vector<std::int32_t> Ids() const;
    FilterList List() const;

    std::vector<FilterLinkState> States() const;
    std::int32_t NextId() const { return m_next_id; }
    /// Filters that are gone are left out.
    void Restore(const std::vector<FilterLinkState>& states, std::int32_t next_id, const FindFilter& find);

  private:
    std::map<std::int32_t, std::shared_ptr<const FilterBody>> m_filters;
    std::int32_t m_next_id = 1;
};

}  // namespace qv_notify
