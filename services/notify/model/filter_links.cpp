#include "services/notify/model/filter_links.h"

#include <algorithm>
#include <utility>

namespace qv_notify {

std::int32_t FilterLinks::Add(std::shared_ptr<const FilterBody> filter) {
    m_filters.emplace(m_next_id, std::move(filter));
    return m_next_id++;
}

bool FilterLinks::Remove(std::int32_t id) {
    return m_filters.erase(id) > 0;
}

std::shared_ptr<const FilterBody> FilterLinks::Find(std::int32_t id) const {
    const auto found = m_filters.find(id);
    return found == m_filters.end() || found->second->Destroyed() ? nullptr : found->second;
}

std::vector<std::int32_t> FilterLinks::Ids() const {
    std::vector<std::int32_t> ids;
    for (const auto& [id, filter] : m_filters) {
        if (!filter->Destroyed()) {
            ids.push_back(id);
        }
    }
    return ids;
}

FilterList FilterLinks::List() const {
    FilterList list;
    for (const auto& [id, filter] : m_filters) {
        list.push_back(filter);
    }
    return list;
}

std::vector<FilterLinkState> FilterLinks::States() const {
    std::vector<FilterLinkState> states;
    for (const auto& [id, filter] : m_filters) {
        if (!filter->Destroyed()) {
            states.push_back({id, filter->Id(), ""});
        }
    }
    return states;
}

void FilterLinks::Restore(const std::vector<FilterLinkState>& states, std::int32_t next_id,
                          const FindFilter& find) {
    m_next_id = std::max(m_next_id, next_id);
    for (const FilterLinkState& state : states) {
        if (auto filter = state.filter_id ? find(*state.filter_id) : nullptr) {
            m_filters.emplace(state.local_id, std::move(filter));
            m_next_id = std::max(m_next_id, state.local_id + 1);
        }
    }
}

}  // namespace qv_notify
