#pragma once

#include <tao/corba.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace NS_CORBA {

/// Reads basic types from CDR in one block (CORBA 3.0, 15.3.1), without copying any of it.
///
/// Alignment counts from the block's first byte. Whatever the bytes say, nothing outside of the block is
/// read: an attempt raises CORBA::MARSHAL. Used by one thread.
class CdrReader {
  public:
    /// @param swapped true when the bytes are in the other byte order than this machine's
    CdrReader(const char* begin, std::size_t size, bool swapped = false)
        : m_begin(begin), m_next(begin), m_end(begin + size), m_swapped(swapped) {}

    /// The encapsulation (15.3.3) of `size` bytes at `begin`: its first octet tells the byte order.
    static CdrReader Encapsulation(const char* begin, std::size_t size) {
        CdrReader reader(begin, size);
        reader.m_swapped = (reader.Octet() & 1) != kLittleEndian;
        return reader;
    }

    std::size_t Left() const { return static_cast<std::size_t>(m_end - m_next); }
    /// The next byte to be read.
    const char* Position() const { return m_next; }

    std::uint8_t Octet() { return static_cast<std::uint8_t>(*Take(1)); }
    std::uint16_t UShort() { return Number<std::uint16_t>(); }
    std::uint32_t ULong() { return Number<std::uint32_t>(); }
    std::uint64_t ULongLong() { return Number<std::uint64_t>(); }
    float Float() {
        const std::uint32_t bits = ULong();
        float value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

    /// A string's text, up to its first NUL.
    std::string_view String() {
        const std::uint32_t length = ULong();
        const char* const text = Take(length);
        return std::string_view(text, strnlen(text, length));
    }
    /// `count` bytes.
    std::string_view Octets(std::size_t count) { return std::string_view(Take(count), count); }
    /// A sequence of octets: its length, then so many bytes.
    std::string_view OctetSequence() {
        const std::uint32_t length = ULong();
        return Octets(length);
    }
    void Skip(std::size_t count) { Take(count); }
    /// Moves on to the next multiple of `size`, a power of 2, and then over `count` bytes.
    void SkipAligned(std::size_t size, std::size_t count) {
        Align(size);
        Take(count);
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

    static std::uint16_t Swap(std::uint16_t value) {
        return __builtin_bswap16(value);
    }
    static std::uint32_t Swap(std::uint32_t value) {
        return __builtin_bswap32(value);
    }
    static std::uint64_t Swap(std::uint64_t value) {
        return __builtin_bswap64(value);
    }

    template <class T>
    T Number() {
        Align(sizeof(T));
        T value;
        std::memcpy(&value, Take(sizeof value), sizeof value);
        return m_swapped ? Swap(value) : value;
    }

    const char* m_begin;
    const char* m_next;
    const char* m_end;
    bool m_swapped;
};

}  // namespace NS_CORBA
