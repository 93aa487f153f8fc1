#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <shared_mutex>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "demo/agent/core/attributes.h"

namespace qv_demo {

using TextPairs = std::vector<std::pair<std::string, std::string>>;
using Texts = std::map<std::string, std::string>;

/// One network element, as the data file describes it.
struct Element {
    std::string name;
    std::string user_label;
    std::string native_name;
    std::string owner;
    std::string location;
    std::string version;
    std::string product;
    bool reachable = true;
    bool in_sync = true;
    std::vector<short> rates;  ///< layer rates by their numbers
    Texts additional_info;
    Attributes attributes;  ///< none at first
};

/// The EMS itself.
struct EmsInfo {
    std::string user_label;
    std::string owner;
    std::string version;
    std::string type;
};

/// A data file that can't be used; the text names the file, and the element where there is one.
class InventoryError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The network that the demo EMS manages. Elements never come or go while the agent runs and keep their
/// order, so a position stays valid. Thread-safe: readers run in parallel, a change waits for them.
class Inventory {
  public:
    Inventory(EmsInfo ems, std::vector<Element> elements);

    /// Reads the JSON data file. Raises InventoryError.
    static Inventory Load(const std::string& path);

    Inventory(Inventory&& other) noexcept;

    const EmsInfo& ems() const { return ems_; }
    std::size_t size() const { return elements_.size(); }

    /// Calls `visit` for at most `count` elements from position `first` on, under the read lock.
    void ForRange(std::size_t first, std::size_t count,
                  const std::function<void(const Element&)>& visit) const;

    /// Calls `visit` for the element of that name, under the read lock. False when there is none.
    bool Visit(const std::string& name, const std::function<void(const Element&)>& visit) const;

    /// Calls `change` for the element of that name, under the write lock. False when there is none.
    bool Change(const std::string& name, const std::function<void(Element&)>& change);

    enum class LabelResult { kSet, kNotFound, kInUse };

    /// Gives the element a label; with `unique`, only one that no other element carries.
    LabelResult SetUserLabel(const std::string& name, const std::string& label, bool unique);

  private:
    EmsInfo ems_;
    std::vector<Element> elements_;
    std::unordered_map<std::string, std::size_t> positions_;
    mutable std::shared_mutex mutex_;
};

/// Merges `changes` into `info`: an existing name takes the new value, the value "-" removes the name. All of
/// them or none: what is kept has the bounds of an element's attributes.
Attributes::SetResult MergeInfo(Texts& info, const TextPairs& changes);

}  // namespace qv_demo
