#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "orb/cdr_reader.h"
#include "orb/request_values.h"

namespace NS_CORBA {

/// Reads CDR as qv_orb::CdrReader does, and also the values of a request as the ORB hands them out: large
/// arrays of bytes are read where they stand.
class CdrReader : public qv_orb::BasicCdrReader<CdrReader> {
  public:
    /// @param swapped true when the bytes are in the other byte order than this machine's
    CdrReader(const char* begin, std::size_t size, bool swapped = false)
        : BasicCdrReader(begin, size, swapped) {}

    explicit CdrReader(const qv_orb::CdrBytes& bytes) : CdrReader(bytes.data, bytes.size) {
        m_detour = bytes.detours;
        m_detoursLeft = bytes.detour_count;
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
    /// How many bytes there are to be read, those on detours included.
    std::size_t BytesAhead() const {
        std::size_t bytes = Left();
        for (std::size_t i = 0; i < m_detoursLeft; ++i) {
            bytes += m_detour[i].size;
        }
        return bytes;
    }
    void Skip(std::size_t count) {
        TakePieces(count, [](const char*, std::size_t) {});
    }

  private:
    friend class qv_orb::BasicCdrReader<CdrReader>;

    const char* Take(std::size_t count) {
        if (m_detoursLeft != 0 && count != 0 && m_next == m_begin + m_detour->place) {
            return TakeOnDetour(count);
        }
        return BasicCdrReader::Take(count);
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

    const qv_orb::CdrDetour* m_detour = nullptr;  // the next one
    std::size_t m_detoursLeft = 0;
    std::size_t m_detourTaken = 0;
    std::string m_joined;  // a text that stood in pieces
};

}  // namespace NS_CORBA
