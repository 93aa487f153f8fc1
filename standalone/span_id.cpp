#include "standalone/span_id.h"

#include <array>
#include <cstdint>
#include <cstring>

#include "standalone/fork_count.h"
#include "standalone/random_bytes.h"

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
        FillRandom(m_numbers.data(), sizeof m_numbers);
        m_next = 0;
    }

    std::array<std::uint64_t, 32> m_numbers{};  // getrandom gives up to 256 bytes in one piece
    std::size_t m_next = m_numbers.size();
    unsigned m_forks = 0;
};

thread_local RandomSource t_random;

std::string SixteenDigits(std::uint64_t number) {
    unsigned char bytes[sizeof number];
    std::memcpy(bytes, &number, sizeof number);
    std::string text;
    text.reserve(2 * sizeof bytes);
    AppendHex(text, bytes, sizeof bytes);
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
