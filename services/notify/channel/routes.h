// For whom the events of a channel are.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "services/notify/channel/filter_body.h"
#include "services/notify/channel/type_set.h"
#include "services/notify/delivery/feed.h"

namespace qv_notify {

/// A proxy with a consumer.
struct Destination {
    std::string path;
    std::shared_ptr<Feed> feed;
    TypeSet types;
    FilterList filters;
};

/// A consumer admin with its proxies: their filters and its own are combined by its operator.
struct DestinationGroup {
    bool and_operator = true;
    FilterList filters;
    std::vector<Destination> members;
};

/// Whether events go through an admin's filters and those of a proxy below it.
bool PassesBoth(bool and_operator, const FilterList& admin, const FilterList& proxy,
                const CosNotification::StructuredEvent& event);

/// All destinations of a channel. Readers see it as it was at one moment. Any thread may call.
class Routes {
  public:
    using Groups = std::map<std::int32_t, std::shared_ptr<const DestinationGroup>>;

    void Replace(std::int32_t admin, DestinationGroup group);
    void Remove(std::int32_t admin);
    std::shared_ptr<const Groups> Get() const;

    /// The destinations of an event, among those of `groups`, which have to outlive the result.
    static std::vector<const Destination*> Find(const Groups& groups,
                                                const CosNotification::StructuredEvent& event);

  private:
    mutable std::mutex m_mutex;
    std::shared_ptr<const Groups> m_groups = std::make_shared<Groups>();
};

}  // namespace qv_notify
