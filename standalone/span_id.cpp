#include "standalone/span_id.h"

#include <sys/random.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <random>

#include "standalone/fork_count.h"

namespace qv_standalone {
namespace {

/// The system's random numbers, fetched some at a time: a call of the system for each would cost ten times
/// the rest. One per thread.
class RandomSource {
  public:
    std::uint64_t Next() {
        if (m_next == m_numbers.size() || m_forks != ForkCount()) {
            Fetch();
        }
        return m_numbers[m_next++];
    }

  private:
    void Fetch() {
        m_forks = ForkCount();
        ssize_t got = 0;
        do {
            got = getrandom(m_numbers.data(), sizeof m_numbers, 0);
        } while (got < 0 && errno == EINTR);
        if (got != static_cast<ssize_t>(sizeof m_numbers)) {
            // A kernel without getrandom, or a sandbox that forbids it.
            std::random_device device;
            for (std::uint64_t& number : m_numbers) {
                number = (static_cast<std::uint64_t>(device()) << 32) | device();
            }
        }
        m_next = 0;
    }

    std::array<std::uint64_t, 32> m_numbers{};  // getrandom gives up to 256 bytes in one piece
    std::size_t m_next = m_numbers.size();
    unsigned m_forks = 0;
};

thread_local RandomSource t_random;

std::string SixteenDigits(std::uint64_t number) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text(16, '0');
    for (std::size_t i = text.size(); i-- > 0; number >>= 4) {
        text[i] = kDigits[number & 0x0f];
    }
    return text;
}

}  // namespace

std::string NewSpanId() noexcept {
    try {
        std::uint64_t number = 0;
        while (number == 0) {
            number = t_random.Next();
        }
        return SixteenDigits(number);
    } catch (...) {
        return {};
    }
}

}  // namespace qv_standalone
