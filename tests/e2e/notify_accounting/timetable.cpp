#include "tests/e2e/notify_accounting/timetable.h"

#include <algorithm>
#include <cstdlib>

namespace qv_accounting {

namespace {

constexpr int kVisitors = 4;

class Maker {
  public:
    Maker(std::uint64_t seed, std::int64_t events) : m_random(seed), m_events(events) {}

    std::int64_t Moment(double from, double to) {
        const auto all = static_cast<double>(m_events);
        return std::uniform_int_distribution<std::int64_t>(static_cast<std::int64_t>(all * from),
                                                           static_cast<std::int64_t>(all * to))(m_random);
    }

    void Add(std::int64_t at, Deed::Kind kind, const std::string& who = "") {
        m_deeds.push_back({at, kind, who});
    }

    void AddHang(const std::string& who, std::int64_t from, std::int64_t to) {
        const std::int64_t begin = std::uniform_int_distribution<std::int64_t>(from, to)(m_random);
        Add(begin, Deed::Kind::kHang, who);
        Add(std::uniform_int_distribution<std::int64_t>(begin, to)(m_random), Deed::Kind::kLetGo, who);
    }

    std::vector<Deed> Take() {
        std::stable_sort(m_deeds.begin(), m_deeds.end(),
                         [](const Deed& one, const Deed& other) { return one.at < other.at; });
        return std::move(m_deeds);
    }

  private:
    std::mt19937_64 m_random;
    const std::int64_t m_events;
    std::vector<Deed> m_deeds;
};

}  // namespace

std::uint64_t Seed() {
    const char* const given = std::getenv("QV_ACCOUNTING_SEED");
    return given != nullptr ? std::strtoull(given, nullptr, 10) : std::random_device()();
}

std::vector<Deed> MakeTimetable(std::uint64_t seed, std::int64_t events, std::size_t kills,
                                std::int64_t overflow) {
    Maker maker(seed, events);
    const std::int64_t overflow_begin = maker.Moment(0.2, 0.8);
    maker.Add(overflow_begin, Deed::Kind::kOverflow);
    for (std::size_t kill = 0; kill < kills;) {
        const std::int64_t at = maker.Moment(0.01, 0.99);
        if (at < overflow_begin || at > overflow_begin + overflow) {
            maker.Add(at, Deed::Kind::kKill);
            ++kill;
        }
    }
    for (int visitor = 1; visitor <= kVisitors; ++visitor) {
        const std::string who = "visitor " + std::to_string(visitor);
        const std::int64_t join = maker.Moment(0.0, 0.85);
        const std::int64_t leave = join + maker.Moment(0.02, 0.15);
        maker.Add(join, Deed::Kind::kJoin, who);
        maker.AddHang(who, join, leave);
        maker.Add(leave, Deed::Kind::kLeave, who);
    }
    maker.Add(maker.Moment(0.3, 0.6), Deed::Kind::kJoin, "late");
    for (const double part : {0.1, 0.5}) {
        const std::int64_t from = maker.Moment(part, part + 0.3);
        maker.AddHang("steady", from, from + maker.Moment(0.005, 0.02));
    }
    return maker.Take();
}

}  // namespace qv_accounting
