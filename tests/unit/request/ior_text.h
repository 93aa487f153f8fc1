// Stringified references, made by hand.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qv_test {

/// Writes CDR in either byte order.
class CdrText {
  public:
    explicit CdrText(bool little) : m_little(little) {}

    CdrText& Octet(unsigned value) {
        m_bytes.push_back(static_cast<char>(value));
        return *this;
    }
    CdrText& Ushort(unsigned value) { return Number(value, 2); }
    CdrText& Ulong(std::uint32_t value) { return Number(value, 4); }
    CdrText& String(const std::string& value) { return Octets(value + '\0'); }
    CdrText& Octets(const std::string& value) {
        Ulong(static_cast<std::uint32_t>(value.size()));
        m_bytes += value;
        return *this;
    }
    const std::string& bytes() const { return m_bytes; }

  private:
    CdrText& Number(std::uint32_t value, std::size_t size) {
        m_bytes.resize((m_bytes.size() + size - 1) / size * size);
        for (std::size_t i = 0; i < size; ++i) {
            Octet(value >> 8 * (m_little ? i : size - 1 - i) & 0xff);
        }
        return *this;
    }

    const bool m_little;
    std::string m_bytes;
};

struct Profile {
    std::uint32_t tag = 0;
    std::string body;
};

/// The body of a profile as far as it is read, and an object key behind it.
inline std::string Body(const std::string& host, unsigned port, unsigned major = 1, unsigned minor = 2,
                        bool little = true) {
    CdrText body(little);
    body.Octet(little ? 1 : 0).Octet(major).Octet(minor).String(host).Ushort(port).Octets("key");
    return body.bytes();
}

inline std::string IorBytes(const std::vector<Profile>& profiles, bool little = true,
                            const std::string& type = "IDL:x/Y:1.0") {
    CdrText ior(little);
    ior.Octet(little ? 1 : 0).String(type).Ulong(static_cast<std::uint32_t>(profiles.size()));
    for (const Profile& profile : profiles) {
        ior.Ulong(profile.tag).Octets(profile.body);
    }
    return ior.bytes();
}

inline std::string Hex(const std::string& bytes, bool upper = false) {
    const char* const digits = upper ? "0123456789ABCDEF" : "0123456789abcdef";
    std::string text;
    for (const char c : bytes) {
        const unsigned byte = static_cast<unsigned char>(c);
        text.push_back(digits[byte >> 4]);
        text.push_back(digits[byte & 15]);
    }
    return text;
}

inline std::string Ior(const std::vector<Profile>& profiles, bool little = true) {
    return "IOR:" + Hex(IorBytes(profiles, little));
}

}  // namespace qv_test
