#include "logging/ior_text.h"

#include <cstdint>
#include <string_view>

namespace NS_CORBA {

namespace {

/// Writes an encapsulation as hex digits. Counts what it wrote, for the alignment.
class HexEncapsulation {
  public:
    explicit HexEncapsulation(std::string& out) : m_out(out) { Octet(kByteOrder); }

    void ULong(std::uint32_t value) {
        while (m_count % sizeof value != 0) {
            Octet(0);
        }
        char bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        Octets(std::string_view(bytes, sizeof bytes));
    }
    void OctetSequence(std::string_view octets) {
        ULong(static_cast<std::uint32_t>(octets.size()));
        Octets(octets);
    }

  private:
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    static constexpr std::uint8_t kByteOrder = 1;
#else
    static constexpr std::uint8_t kByteOrder = 0;
#endif

    void Octet(std::uint8_t value) {
        static constexpr char kDigits[] = "0123456789abcdef";
        m_out += kDigits[value >> 4];
        m_out += kDigits[value & 15];
        ++m_count;
    }
    void Octets(std::string_view octets) {
        for (const char octet : octets) {
            Octet(static_cast<std::uint8_t>(octet));
        }
    }

    std::string& m_out;
    std::size_t m_count = 0;
};

}  // namespace

void AppendIorText(CdrReader& reader, std::string& out) {
    out += "IOR:";
    HexEncapsulation ior(out);
    ior.OctetSequence(reader.OctetSequence());  // the repository id, as a string with its NUL
    const std::uint32_t profiles = reader.ULong();
    ior.ULong(profiles);
    for (std::uint32_t i = 0; i < profiles; ++i) {
        ior.ULong(reader.ULong());
        ior.OctetSequence(reader.OctetSequence());
    }
}

void SkipReference(CdrReader& reader) {
    reader.OctetSequence();
    const std::uint32_t profiles = reader.ULong();
    for (std::uint32_t i = 0; i < profiles; ++i) {
        reader.ULong();
        reader.OctetSequence();
    }
}

}  // namespace NS_CORBA
