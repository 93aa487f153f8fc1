#pragma once

#include <tao/corba.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "orb/request_values.h"

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

    /// The values of a request as the ORB hands them out: large arrays of bytes are read where they stand.
    explicit CdrReader(const qv_orb::CdrBytes& bytes) : CdrReader(bytes.data, bytes.size) {
        m_detour = bytes.detours;
        m_detoursLeft = bytes.detour_count;
    }

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

    /// A string's text, up to its first NUL. Valid until the next one is read.
    std::string_view String() {
        const std::uint32_t length = ULong();
        if (length == 0) {
            return {};
        }
        const char* const text = m_detoursLeft != 0 ? Join(length) : Take(length);
        return std::string_view(text, strnlen(text, length));
    }
    /// `count` bytes.
    std::string_view Octets(std::size_t count) { return std::string_view(Take(count), count); }
    /// A sequence of octets: its length, then so many bytes.
    std::string_view OctetSequence() {
        const std::uint32_t length = ULong();
        return Octets(length);
    }
    void Skip(std::size_t count) {
        TakePieces(count, [](const char*, std::size_t) {});
    }
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
        if (m_detoursLeft != 0 && count != 0 && m_next == m_begin + m_detour->place) {
            return TakeOnDetour(count);
        }
        if (count > Left()) {
            Overrun();
        }
        const char* const taken = m_next;
        m_next += count;
        return taken;
    }

    template <class Use>
    void TakePieces(std::size_t count, Use use) {
        while (m_detoursLeft != 0 && count != 0) {
            const std::size_t piece = std::min(count, BytesTogether());
            use(Take(piece), piece);
            count -= piece;
        }
        use(Take(count), count);
    }

    /// The next bytes, of which some may stand elsewhere, in one place.
    const char* Join(std::size_t count) {
        if (count <= BytesTogether()) {
            return Take(count);
        }
        m_joined.clear();
        TakePieces(count, [this](const char* piece, std::size_t size) { m_joined.append(piece, size); });
        return m_joined.data();
    }

    /// How many of the next bytes stand one behind the other; only while there are detours ahead.
    std::size_t BytesTogether() const {
        const char* const place = m_begin + m_detour->place;
        if (m_next == place) {
            return m_detour->size - m_detourTaken;
        }
        return static_cast<std::size_t>(place - m_next);
    }

    const char* TakeOnDetour(std::size_t count) {
        if (count > m_detour->size - m_detourTaken) {
            Overrun();
        }
        const char* const taken = m_detour->data + m_detourTaken;
        m_detourTaken += count;
        if (m_detourTaken == m_detour->size) {
            m_next += m_detour->size % qv_orb::kCdrPhase;
            ++m_detour;
            --m_detoursLeft;
            m_detourTaken = 0;
        }
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
    const qv_orb::CdrDetour* m_detour = nullptr;  // the next one
    std::size_t m_detoursLeft = 0;
    std::size_t m_detourTaken = 0;
    std::string m_joined;  // a text that stood in pieces
};

}  // namespace NS_CORBA
