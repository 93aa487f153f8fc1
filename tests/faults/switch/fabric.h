// The links between all hosts, and the orders that change them.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/faults/switch/link.h"

namespace qv_faults {

/// A link in each direction between each two of the hosts. Not thread-safe.
class Fabric {
  public:
    Fabric(std::uint64_t seed, const std::vector<std::string>& hosts);

    /// Does what a line orders, for both directions between hosts A and B, and returns "ok", the counts, or
    /// "error " with a reason:
    ///
    ///   cut A B | drop A B SHARE | duplicate A B SHARE | reorder A B SHARE MS | delay A B MS JITTER_MS
    ///   heal            no rule holds any more
    ///   counts          a line of names and numbers for each direction, then "ok"
    std::string Order(const std::string& line);

    /// Null for hosts that it doesn't have.
    Link* Find(const std::string& from, const std::string& to);

  private:
    std::string Change(const std::vector<std::string>& words);
    std::string Counts() const;

    std::map<std::pair<std::string, std::string>, Link> links_;
};

}  // namespace qv_faults
