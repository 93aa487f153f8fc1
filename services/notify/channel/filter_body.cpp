#include "services/notify/channel/filter_body.h"

#include <algorithm>
#include <utility>

#include "services/notify/channel/type_set.h"

namespace qv_notify {

bool FilterConstraint::Covers(const CosNotification::StructuredEvent& event) const {
    const CosNotification::EventType& type = event.header.fixed_header.event_type;
    return types.empty() || std::any_of(types.begin(), types.end(), [&](const EventTypeName& pattern) {
               return Means(pattern, type.domain_name.in(), type.type_name.in());
           });
}

std::shared_ptr<const FilterBody::Constraints> FilterBody::Get() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_constraints;
}

void FilterBody::Set(Constraints constraints) {
    auto made = std::make_shared<const Constraints>(std::move(constraints));
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_constraints.swap(made);
}

void FilterBody::Destroy() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_destroyed = true;
}

bool FilterBody::Destroyed() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_destroyed;
}

bool FilterBody::Passes(const CosNotification::StructuredEvent& event) const {
    const std::shared_ptr<const Constraints> constraints = Get();
    return std::any_of(constraints->begin(), constraints->end(), [&](const FilterConstraint& constraint) {
        return constraint.Covers(event) && constraint.expression->Matches(event);
    });
}

bool PassesOneOf(const FilterList& filters, const CosNotification::StructuredEvent& event) {
    bool any = false;
    for (const std::shared_ptr<const FilterBody>& filter : filters) {
        if (!filter->Destroyed()) {
            any = true;
            if (filter->Passes(event)) {
                return true;
            }
        }
    }
    return !any;
}

}  // namespace qv_notify
