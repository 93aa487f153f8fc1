#pragma once

#include <tao/corba.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace qv_notify::etcl {

/// Reads basic types from CDR in one block without copying it. Alignment counts from the block's first byte.
/// Whatever the bytes say, nothing outside of the block is read: an attempt raises CORBA::MARSHAL. Used by
/// one thread; a copy reads on by itself.
class CdrReader {
  public:
    CdrReader() = default;
    /// @param swapped true when the bytes are in the other byte order than this machine's
    CdrReader(const char* begin, std::size_t size, bool swapped = false)
        : m_begin(begin), m_next(begin), m_end(begin + size), m_swapped(swapped) {}

    /// The encapsulation in these bytes: its first octet tells the byte order.
    static CdrReader Encapsulation(std::string_view bytes) {
        CdrReader reader(bytes.data(), bytes.size());
        reader.m_swapped = (reader.Octet() & 1) != kLittleEndian;
        return reader;
    }

    const char* Position() const { return m_next; }
    bool LittleEndian() const { return (kLittleEndian != 0) != m_swapped; }

    std::uint8_t Octet() { return static_cast<std::uint8_t>(*Take(1)); }
    std::uint16_t UShort() { return Number<std::uint16_t>(); }
    std::uint32_t ULong() { return Number<std::uint32_t>(); }
    std::uint64_t ULongLong() { return Number<std::uint64_t>(); }
    float Float() { return Bits<float>(ULong()); }
    double Double() { return Bits<double>(ULongLong()); }

    /// `count` bytes.
    std::string_view Octets(std::size_t count) { return std::string_view(Take(count), count); }
    /// A sequence of octets: its length, then so many bytes.
    std::string_view OctetSequence() {
        const std::uint32_t length = ULong();
        return Octets(length);
    }
    /// A string's text, up to its first NUL.
    std::string_view String() {
        const std::string_view bytes = OctetSequence();
        return std::string_view(bytes.data(), strnlen(bytes.data(), bytes.size()));
    }
    /// Moves on to the next multiple of `size`, a power of 2, and then over `count` bytes.
    void SkipAligned(std::size_t size, std::uint64_t count) {
        Align(size);
        if (count > Left()) {
            Overrun();
        }
        m_next += count;
    }

  private:
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    static constexpr int kLittleEndian = 1;
#else
    static constexpr int kLittleEndian = 0;
#endif

    [[noreturn]] static void Overrun() {
        throw CORBA::MARSHAL(0, CORBA::COMPLETED_NO);
    }

    std::size_t Left() const {
        return static_cast<std::size_t>(m_end - m_next);
    }

    void Align(std::size_t size) {
        const std::size_t offset = static_cast<std::size_t>(m_next - m_begin);
        Take(-offset & (size - 1));
    }

    const char* Take(std::size_t count) {
        if (count > Left()) {
            Overrun();
        }
        const char* const taken = m_next;
        m_next += count;
        return taken;
    }

    template <class Value, class Integer>
    static Value Bits(Integer bits) {
        static_assert(sizeof(Value) == sizeof(Integer));
        Value value{};
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

    template <class Integer>
    Integer Number() {
        Align(sizeof(Integer));
        unsigned char bytes[sizeof(Integer)];
        const char* const taken = Take(sizeof(Integer));
        for (std::size_t i = 0; i < sizeof(Integer); ++i) {
            bytes[i] = static_cast<unsigned char>(taken[m_swapped ? sizeof(Integer) - 1 - i : i]);
        }
        Integer value = 0;
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }

    const char* m_begin = nullptr;
    const char* m_next = nullptr;
    const char* m_end = nullptr;
    bool m_swapped = false;
};

}  // namespace qv_notify::etcl
