// What one direction of a link between two hosts does to its packets.
#pragma once

#include <chrono>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace qv_faults {

using Delay = std::chrono::milliseconds;

/// Shares are 0 to 1.
struct LinkRules {
    bool cut = false;
    double drop = 0;
    double duplicate = 0;
    double reorder = 0;  ///< share of packets that wait for `reorder_by` and let later ones go ahead
    Delay reorder_by{0};
    Delay delay{0};
    Delay jitter{0};  ///< up to so much more, in whole milliseconds
};

struct LinkCounts {
    std::uint64_t seen = 0;
    std::uint64_t passed = 0;  ///< copies included
    std::uint64_t cut = 0;
    std::uint64_t dropped = 0;
    std::uint64_t duplicated = 0;
    std::uint64_t reordered = 0;
    std::uint64_t delayed = 0;
};

/// Decides on the packets of one direction. Each packet takes the same number of random numbers from a
/// sequence of the link's own, whatever the rules: so the n-th packet of a link meets the same luck in each
/// run of a seed. Not thread-safe.
class Link {
  public:
    Link(std::uint64_t seed, const std::string& name);

    void SetRules(const LinkRules& rules) { rules_ = rules; }
    const LinkRules& rules() const { return rules_; }
    const LinkCounts& counts() const { return counts_; }

    /// How long each copy of the next packet waits; none when it is lost.
    std::vector<Delay> Decide();

  private:
    double Luck();
    Delay Wait(double luck) const;

    LinkRules rules_;
    LinkCounts counts_;
    std::mt19937_64 chance_;
};

}  // namespace qv_faults
