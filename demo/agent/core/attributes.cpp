#include "demo/agent/core/attributes.h"

namespace qv_demo {
namespace {

bool IsLong(const AttributeValue& value) {
    const auto* const text = std::get_if<std::string>(&value);
    return text != nullptr && text->size() > Attributes::kLongestText;
}

}  // namespace

Attributes::SetResult Attributes::Set(const std::vector<Attribute>& changes) {
    auto changed = values_;
    for (const auto& [name, value] : changes) {
        if (name.empty() || name.size() > kLongestName) {
            return SetResult::kBadName;
        }
        if (IsLong(value)) {
            return SetResult::kLongText;
        }
        changed[name] = value;
        if (changed.size() > kMost) {
            return SetResult::kTooMany;
        }
    }
    values_ = std::move(changed);
    return SetResult::kSet;
}

const AttributeValue* Attributes::Find(const std::string& name) const {
    const auto found = values_.find(name);
    return found == values_.end() ? nullptr : &found->second;
}

}  // namespace qv_demo
