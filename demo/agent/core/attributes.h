#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace qv_demo {

/// A text, a number or a flag.
using AttributeValue = std::variant<std::string, std::int32_t, bool>;
using Attribute = std::pair<std::string, AttributeValue>;

/// An OSS's notes about one element, by name. Bounded, since they are kept in memory, as are its other texts
/// that an OSS may change.
class Attributes {
  public:
    static constexpr std::size_t kMost = 100;
    static constexpr std::size_t kLongestName = 64;
    static constexpr std::size_t kLongestText = 1024;

    enum class SetResult { kSet, kBadName, kLongText, kTooMany };

    /// Adds or replaces all `changes`, or none of them.
    SetResult Set(const std::vector<Attribute>& changes);

    /// Null when there is none of that name.
    const AttributeValue* Find(const std::string& name) const;

    const std::map<std::string, AttributeValue>& all() const { return values_; }

  private:
    std::map<std::string, AttributeValue> values_;
};

}  // namespace qv_demo
