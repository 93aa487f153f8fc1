#include "tests/faults/switch/link.h"

namespace qv_faults {
namespace {

/// FNV-1a: the same on each machine, which std::hash need not be.
std::uint64_t HashOf(const std::string& text) {
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char letter : text) {
        hash = (hash ^ static_cast<unsigned char>(letter)) * 0x100000001b3U;
    }
    return hash;
}

}  // namespace

Link::Link(std::uint64_t seed, const std::string& name) : chance_(seed ^ HashOf(name)) {}

// From 0 to below 1. The distributions of the standard library differ between libraries, the engine doesn't.
double Link::Luck() {
    constexpr int kUnusedBits = 11;
    constexpr double kStep = 1.0 / static_cast<double>(1ULL << 53U);
    return static_cast<double>(chance_() >> kUnusedBits) * kStep;
}

Delay Link::Wait(double luck) const {
    const auto spread = static_cast<double>(rules_.jitter.count() + 1);
    return rules_.delay + Delay(static_cast<Delay::rep>(luck * spread));
}

std::vector<Delay> Link::Decide() {
    const double drop = Luck();
    const double duplicate = Luck();
    const double reorder = Luck();
    const double jitter = Luck();
    const double copy_jitter = Luck();
    ++counts_.seen;
    if (rules_.cut) {
        ++counts_.cut;
        return {};
    }
    if (drop < rules_.drop) {
        ++counts_.dropped;
        return {};
    }
    Delay wait = Wait(jitter);
    if (reorder < rules_.reorder) {
        ++counts_.reordered;
        wait += rules_.reorder_by;
    }
    std::vector<Delay> copies{wait};
    if (duplicate < rules_.duplicate) {
        ++counts_.duplicated;
        copies.push_back(Wait(copy_jitter));
    }
    counts_.passed += copies.size();
    counts_.delayed += wait.count() > 0 ? 1 : 0;
    return copies;
}

}  // namespace qv_faults
