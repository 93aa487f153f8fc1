// What happens when in a run of the accounting test.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace qv_accounting {

/// What to do once so many events have been taken.
struct Deed {
    enum class Kind { kKill, kJoin, kHang, kLetGo, kLeave, kOverflow };
    std::int64_t at = 0;
    Kind kind = Kind::kKill;
    std::string who;
};

/// From the environment's QV_ACCOUNTING_SEED, otherwise random.
std::uint64_t Seed();

/// Deeds at random moments, in their order: `kills`, consumers that join and hang and leave, one that joins
/// and stays, and an overflow, which takes `overflow` events of its own, between two kills. "steady" is there
/// from the beginning.
std::vector<Deed> MakeTimetable(std::uint64_t seed, std::int64_t events, std::size_t kills,
                                std::int64_t overflow);

}  // namespace qv_accounting
