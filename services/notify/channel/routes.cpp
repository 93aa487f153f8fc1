#include "services/notify/channel/routes.h"

#include <utility>

namespace qv_notify {

bool PassesBoth(bool and_operator, const FilterList& admin, const FilterList& proxy,
                const CosNotification::StructuredEvent& event) {
    return and_operator ? PassesOneOf(admin, event) && PassesOneOf(proxy, event)
                        : PassesOneOf(admin, event) || PassesOneOf(proxy, event);
}

void Routes::Replace(std::int32_t admin, DestinationGroup group) {
    auto made = std::make_shared<const DestinationGroup>(std::move(group));
    const std::lock_guard<std::mutex> guard(m_mutex);
    auto groups = std::make_shared<Groups>(*m_groups);
    (*groups)[admin] = std::move(made);
    m_groups = std::move(groups);
}

void Routes::Remove(std::int32_t admin) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    auto groups = std::make_shared<Groups>(*m_groups);
    groups->erase(admin);
    m_groups = std::move(groups);
}

std::shared_ptr<const Routes::Groups> Routes::Get() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_groups;
}

std::vector<const Destination*> Routes::Find(const Groups& groups,
                                             const CosNotification::StructuredEvent& event) {
    std::vector<const Destination*> found;
    for (const auto& [id, group] : groups) {
        if (group->members.empty()) {
            continue;
        }
        const bool admin_passes = PassesOneOf(group->filters, event);
        if (group->and_operator && !admin_passes) {
            continue;
        }
        for (const Destination& member : group->members) {
            const bool enough = admin_passes && !group->and_operator;
            if (member.types.Matches(event) && (enough || PassesOneOf(member.filters, event))) {
                found.push_back(&member);
            }
        }
    }
    return found;
}

}  // namespace qv_notify
