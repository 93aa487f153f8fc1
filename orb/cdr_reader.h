// Reading of marshalled values where they stand, for code that walks them by their TypeCodes.
#pragma once

#include <tao/corba.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace qv_orb {

/// Reads basic types from CDR in one block (CORBA 3.0, 15.3.1), without copying any of it.
///
/// Alignment counts from the block's first byte. Whatever the bytes say, nothing outside of the block is
/// read: an attempt raises CORBA::MARSHAL. Used by one thread; a copy reads on by itself.
///
/// `Self` is the reader that derives from this. One that finds some of its bytes elsewhere than in the block
/// has its own Take() in place of the one here.
template <class Self>
class BasicCdrReader {
  public:
    /// The encapsulation (15.3.3) in these bytes: its first octet tells the byte order.
    static Self Encapsulation(std::string_view bytes) {
        Self reader(bytes.data(), bytes.size());
        reader.m_swapped = (reader.Octet() & 1) != kLittleEndian;
        return reader;
    }

    bool LittleEndian() const { return (kLittleEndian != 0) != m_swapped; }
    std::size_t Left() const { return static_cast<std::size_t>(m_end - m_next); }
    /// The next byte to be read.
    const char* Position() const { return m_next; }

    std::uint8_t Octet() { return static_cast<std::uint8_t>(*TakeNext(1)); }
    std::uint16_t UShort() { return Number<std::uint16_t>(); }
    std::uint32_t ULong() { return Number<std::uint32_t>(); }
    std::uint64_t ULongLong() { return Number<std::uint64_t>(); }
    float Float() { return Bits<float>(ULong()); }
    double Double() { return Bits<double>(ULongLong()); }

    /// `count` bytes.
    std::string_view Octets(std::size_t count) { return std::string_view(TakeNext(count), count); }
    /// A sequence of octets: its length, then so many bytes.
    std::string_view OctetSequence() {
        const std::uint32_t length = ULong();
        return Octets(length);
    }
    /// A string's text, up to its first NUL.
    std::string_view String() {
        const std::string_view bytes = OctetSequence();
        return bytes.substr(0, strnlen(bytes.data(), bytes.size()));
    }
    /// Moves on to the next multiple of `size`, a power of 2, and then over `count` bytes.
    void SkipAligned(std::size_t size, std::size_t count) {
        Align(size);
        TakeNext(count);
    }

  protected:
    BasicCdrReader() = default;
    BasicCdrReader(const char* begin, std::size_t size, bool swapped)
        : m_begin(begin), m_next(begin), m_end(begin + size), m_swapped(swapped) {}

    [[noreturn]] static void Overrun() { throw CORBA::MARSHAL(0, CORBA::COMPLETED_NO); }

    /// The next `count` bytes of the block.
    const char* Take(std::size_t count) {
        if (count > Left()) {
            Overrun();
        }
        const char* const taken = m_next;
        m_next += count;
        return taken;
    }

    const char* m_begin = nullptr;
    const char* m_next = nullptr;
    const char* m_end = nullptr;

  private:
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    static constexpr int kLittleEndian = 1;
#else
    static constexpr int kLittleEndian = 0;
#endif

    const char* TakeNext(std::size_t count) {
        return static_cast<Self*>(this)->Take(count);
    }

    void Align(std::size_t size) {
        const std::size_t offset = static_cast<std::size_t>(m_next - m_begin);
        TakeNext(-offset & (size - 1));
    }

    template <class Value, class Integer>
    static Value Bits(Integer bits) {
        static_assert(sizeof(Value) == sizeof(Integer));
        Value value{};
        std::memcpy(&value, &bits, sizeof value);
        return value;
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

    template <class Integer>
    Integer Number() {
        Align(sizeof(Integer));
        Integer value = 0;
        std::memcpy(&value, TakeNext(sizeof value), sizeof value);
        return m_swapped ? Swap(value) : value;
    }

    bool m_swapped = false;
};

/// A reader of one block that holds all of its bytes.
class CdrReader : public BasicCdrReader<CdrReader> {
  public:
    CdrReader() = default;
    /// @param swapped true when the bytes are in the other byte order than this machine's
    CdrReader(const char* begin, std::size_t size, bool swapped = false)
        : BasicCdrReader(begin, size, swapped) {}
};

}  // namespace qv_orb
