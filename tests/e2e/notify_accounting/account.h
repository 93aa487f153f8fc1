// What a consumer got, compared with what it should have got.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qv_accounting {

/// Events are numbered by each supplier thread by itself, from 0 on.
constexpr std::int32_t kThreadStep = 1000000;
inline std::int32_t Number(std::size_t thread, std::int32_t own) {
    return static_cast<std::int32_t>(thread) * kThreadStep + own;
}

/// What a consumer has a right to, of one supplier thread.
struct Claim {
    std::int32_t begin = 0;     ///< all from this one on, at the latest
    std::int32_t end = 0;       ///< to before this one
    bool until_the_end = true;  ///< otherwise it left: to whichever was its last one
};

struct Account {
    std::size_t got = 0;        ///< different events
    std::size_t missing = 0;    ///< between its first and its last one, and of what it has a right to beside
    std::size_t reordered = 0;  ///< came behind a later one of the same supplier thread, for the first time
    std::size_t repeated = 0;   ///< different events that came more than once
    std::string text;           ///< the first oddities, for whoever has to find out
};

/// `arrivals` in the order in which they came; one claim for each supplier thread.
Account Balance(const std::vector<std::int32_t>& arrivals, const std::vector<Claim>& claims);

}  // namespace qv_accounting
