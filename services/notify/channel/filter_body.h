// What a filter object consists of, apart from its servant.
#pragma once

#include <orbsvcs/CosNotificationC.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "services/notify/etcl/constraint.h"
#include "services/notify/store/description.h"

namespace qv_notify {

/// One constraint of a filter: what events it is about, and what must hold for them.
struct FilterConstraint {
    std::int32_t id = 0;
    std::vector<EventTypeName> types;  ///< none: all
    std::shared_ptr<const etcl::Constraint> expression;

    bool Covers(const CosNotification::StructuredEvent& event) const;
};

/// The constraints of a filter, which several admins and proxies may use. An event passes when one of them
/// holds for it; so nothing passes a filter without constraints. Any thread may call.
class FilterBody {
  public:
    using Constraints = std::vector<FilterConstraint>;

    FilterBody(std::int32_t id, std::string path, bool kept)
        : m_id(id), m_path(std::move(path)), m_kept(kept) {}

    std::int32_t Id() const { return m_id; }
    const std::string& Path() const { return m_path; }
    /// It outlives the process.
    bool Kept() const { return m_kept; }

    std::shared_ptr<const Constraints> Get() const;
    void Set(Constraints constraints);

    /// From now on it counts as removed wherever it is in use.
    void Destroy();
    bool Destroyed() const;

    bool Passes(const CosNotification::StructuredEvent& event) const;

  private:
    const std::int32_t m_id;
    const std::string m_path;
    const bool m_kept;

    mutable std::mutex m_mutex;
    std::shared_ptr<const Constraints> m_constraints = std::make_shared<Constraints>();
    bool m_destroyed = false;
};

using FilterList = std::vector<std::shared_ptr<const FilterBody>>;

/// Whether one of the filters lets the event pass; without filters each event does.
bool PassesOneOf(const FilterList& filters, const CosNotification::StructuredEvent& event);

}  // namespace qv_notify
