#include "demo/agent/core/inventory.h"

#include <algorithm>
#include <mutex>

namespace qv_demo {

Inventory::Inventory(EmsInfo ems, std::vector<Element> elements)
    : ems_(std::move(ems)), elements_(std::move(elements)) {
    positions_.reserve(elements_.size());
    for (std::size_t i = 0; i < elements_.size(); ++i) {
        if (!positions_.emplace(elements_[i].name, i).second) {
            throw InventoryError("element \"" + elements_[i].name + "\" stands in the inventory twice");
        }
    }
}

Inventory::Inventory(Inventory&& other) noexcept
    : ems_(std::move(other.ems_)),
      elements_(std::move(other.elements_)),
      positions_(std::move(other.positions_)) {}

void Inventory::ForRange(std::size_t first, std::size_t count,
                         const std::function<void(const Element&)>& visit) const {
    const std::shared_lock<std::shared_mutex> guard(mutex_);
    const std::size_t begin = std::min(first, elements_.size());
    const std::size_t end = begin + std::min(count, elements_.size() - begin);
    for (std::size_t i = begin; i < end; ++i) {
        visit(elements_[i]);
    }
}

bool Inventory::Visit(const std::string& name, const std::function<void(const Element&)>& visit) const {
    const std::shared_lock<std::shared_mutex> guard(mutex_);
    const auto found = positions_.find(name);
    if (found == positions_.end()) {
        return false;
    }
    visit(elements_[found->second]);
    return true;
}

bool Inventory::Change(const std::string& name, const std::function<void(Element&)>& change) {
    const std::unique_lock<std::shared_mutex> guard(mutex_);
    const auto found = positions_.find(name);
    if (found == positions_.end()) {
        return false;
    }
    change(elements_[found->second]);
    return true;
}

Inventory::LabelResult Inventory::SetUserLabel(const std::string& name, const std::string& label,
                                               bool unique) {
    const std::unique_lock<std::shared_mutex> guard(mutex_);
    const auto found = positions_.find(name);
    if (found == positions_.end()) {
        return LabelResult::kNotFound;
    }
    const bool taken = unique && std::any_of(elements_.begin(), elements_.end(), [&](const Element& other) {
                           return other.name != name && other.user_label == label;
                       });
    if (taken) {
        return LabelResult::kInUse;
    }
    elements_[found->second].user_label = label;
    return LabelResult::kSet;
}

Attributes::SetResult MergeInfo(Texts& info, const TextPairs& changes) {
    Texts merged = info;
    for (const auto& [name, value] : changes) {
        if (value == "-") {
            merged.erase(name);
            continue;
        }
        if (name.empty() || name.size() > Attributes::kLongestName) {
            return Attributes::SetResult::kBadName;
        }
        if (value.size() > Attributes::kLongestText) {
            return Attributes::SetResult::kLongText;
        }
        const bool added = merged.insert_or_assign(name, value).second;
        if (added && merged.size() > Attributes::kMost) {
            return Attributes::SetResult::kTooMany;
        }
    }
    info = std::move(merged);
    return Attributes::SetResult::kSet;
}

}  // namespace qv_demo
