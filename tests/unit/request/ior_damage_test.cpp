// References that were cut, changed or made to do harm.

#include <chrono>

#include "tests/unit/request/ior_fixture.h"

namespace qv_test {
namespace {

class DamagedIor : public IorTest {
  protected:
    /// Puts a number in the place of four bytes.
    static std::string With(const std::string& bytes, std::size_t offset, std::uint32_t value) {
        CdrText number(true);
        number.Ulong(value);
        return bytes.substr(0, offset) + number.bytes() + bytes.substr(offset + 4);
    }

    const std::string m_bytes = IorBytes({{0, Body("emsa", 2809)}});
};

// Where the parts of m_bytes begin.
constexpr std::size_t kTypeLength = 4;
constexpr std::size_t kCount = 20;
constexpr std::size_t kTag = 24;
constexpr std::size_t kBodyLength = 28;
constexpr std::size_t kBody = 32;
constexpr std::size_t kHostLength = kBody + 4;
constexpr std::size_t kHost = kBody + 8;
constexpr std::size_t kPort = kBody + 14;
constexpr std::size_t kKey = kBody + 16;

TEST_F(DamagedIor, TheWholeOneIsValid) {
    ASSERT_EQ("emsa:2809", InfoOfBytes(m_bytes));
    ASSERT_EQ("emsa", m_bytes.substr(kHost, 4));
    ASSERT_EQ(kKey + 7, m_bytes.size());
}

TEST_F(DamagedIor, EveryTruncationIsInvalid) {
    const std::string digits = Hex(m_bytes);
    for (std::size_t length = 0; length < digits.size(); ++length) {
        EXPECT_EQ("invalid", Info("IOR:" + digits.substr(0, length))) << length;
    }
}

TEST_F(DamagedIor, EveryTruncationOfTheBodyIsToldByItsLength) {
    const std::string body = Body("emsa", 2809);
    for (std::size_t length = 0; length <= body.size(); ++length) {
        const bool hasHost = length >= kHost + 5 - kBody;
        const bool hasPort = length >= kPort + 2 - kBody;
        EXPECT_EQ(hasPort   ? "emsa:2809"
                  : hasHost ? "emsa"
                            : "invalid",
                  Info(Ior({{0, body.substr(0, length)}})))
            << length;
    }
}

TEST_F(DamagedIor, EveryFlippedBitIsFoundOrTakenAsItStands) {
    for (std::size_t i = 0; i < m_bytes.size(); ++i) {
        for (int bit = 0; bit < 8; ++bit) {
            std::string bytes = m_bytes;
            bytes[i] = static_cast<char>(bytes[i] ^ (1 << bit));
            const std::string info = InfoOfBytes(bytes);
            const bool padding = (i >= 1 && i < kTypeLength) || i == kBody + 3 || i == kHost + 5;
            const bool type = i >= kTypeLength + 4 && i < kCount;
            if (padding || type || i >= kKey) {
                EXPECT_EQ("emsa:2809", info) << i << ' ' << bit;
            } else if (i >= kPort) {
                EXPECT_NE("emsa:2809", info) << i << ' ' << bit;
                EXPECT_EQ("emsa:", info.substr(0, 5)) << i << ' ' << bit;
            } else if (i < kTypeLength + 4 || (i >= kTag && i < kBody)) {
                EXPECT_TRUE(info == "invalid" || info == "emsa:2809") << info << ' ' << i << ' ' << bit;
            }
        }
    }
}

TEST_F(DamagedIor, EveryByteOfEveryValueIsSurvived) {
    for (std::size_t i = 0; i < m_bytes.size(); ++i) {
        for (int value = 0; value < 256; ++value) {
            std::string bytes = m_bytes;
            bytes[i] = static_cast<char>(value);
            m_parser.DoWork(("IOR:" + Hex(bytes)).c_str());
            EXPECT_LE(LastHostAndPort().size(), m_bytes.size());
        }
    }
}

TEST_F(DamagedIor, LengthsOfGigabytesAreInvalid) {
    for (const std::uint32_t length : {0xffffffffu, 0xfffffffcu, 0x80000000u, 0x7fffffffu, 0x10000u, 64u}) {
        EXPECT_EQ("invalid", InfoOfBytes(With(m_bytes, kTypeLength, length))) << length;
        EXPECT_EQ("invalid", InfoOfBytes(With(m_bytes, kBodyLength, length))) << length;
        EXPECT_EQ("invalid", InfoOfBytes(With(m_bytes, kHostLength, length))) << length;
    }
}

TEST_F(DamagedIor, ALengthJustPastTheEndIsInvalid) {
    const auto rest = static_cast<std::uint32_t>(m_bytes.size() - kBody);
    EXPECT_EQ("emsa:2809", InfoOfBytes(With(m_bytes, kBodyLength, rest)));
    for (std::uint32_t more = 1; more <= 16; ++more) {
        EXPECT_EQ("invalid", InfoOfBytes(With(m_bytes, kBodyLength, rest + more))) << more;
    }
}

TEST_F(DamagedIor, AnyNumberOfProfilesMayBeClaimed) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ("emsa:2809", InfoOfBytes(With(m_bytes, kCount, 0xffffffff)));
    EXPECT_EQ("invalid", InfoOfBytes(With(m_bytes, kCount, 0)));
    const std::string unknown = With(m_bytes, kTag, 77);
    EXPECT_EQ("invalid", InfoOfBytes(With(unknown, kCount, 0xffffffff)));
    // An unknown profile of 4 GB takes what is there, and no time.
    EXPECT_EQ("invalid", InfoOfBytes(With(With(unknown, kCount, 0xffffffff), kBodyLength, 0xffffffff)));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

TEST_F(DamagedIor, AByteOrderOfAnyValueIsBigOrLittle) {
    for (int order = 2; order < 256; ++order) {
        std::string big = IorBytes({{0, Body("emsa", 2809, 1, 2, false)}}, false);
        big[0] = static_cast<char>(order);
        EXPECT_EQ("emsa:2809", InfoOfBytes(big)) << order;
    }
}

TEST_F(DamagedIor, AVeryLongReferenceIsRead) {
    const std::string host(1 << 20, 'h');
    EXPECT_EQ(host + ":1", Info(Ior({{99, std::string(1 << 20, 'x')}, {0, Body(host, 1)}})));
}

}  // namespace
}  // namespace qv_test
