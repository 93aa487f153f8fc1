#include "services/notify/etcl/wide_text.h"

#include <cstdint>

namespace qv_notify::etcl {

namespace {

constexpr char32_t kReplacement = 0xfffd;
constexpr char32_t kByteOrderMark = 0xfeff;

/// The code units of a UTF-16 text.
class Units {
  public:
    explicit Units(std::string_view bytes) : m_bytes(bytes) {
        if (m_bytes.size() < 2) {
            return;
        }
        const char32_t first = Peek();
        m_little = first == 0xfffe;
        if (m_little || first == kByteOrderMark) {
            m_bytes.remove_prefix(2);
        }
    }

    bool AtEnd() const { return m_bytes.size() < 2; }
    char32_t Peek() const {
        const auto a = static_cast<std::uint8_t>(m_bytes[m_little ? 1 : 0]);
        const auto b = static_cast<std::uint8_t>(m_bytes[m_little ? 0 : 1]);
        return (char32_t{a} << 8) | b;
    }
    char32_t Take() {
        const char32_t unit = Peek();
        m_bytes.remove_prefix(2);
        return unit;
    }

  private:
    std::string_view m_bytes;
    bool m_little = false;
};

bool IsHighSurrogate(char32_t unit) {
    return unit >= 0xd800 && unit < 0xdc00;
}

bool IsLowSurrogate(char32_t unit) {
    return unit >= 0xdc00 && unit < 0xe000;
}

char32_t TakeCharacter(Units& units) {
    const char32_t unit = units.Take();
    if (IsHighSurrogate(unit) && !units.AtEnd() && IsLowSurrogate(units.Peek())) {
        return 0x10000 + ((unit - 0xd800) << 10) + (units.Take() - 0xdc00);
    }
    return IsHighSurrogate(unit) || IsLowSurrogate(unit) ? kReplacement : unit;
}

void Append(std::string& text, char32_t character) {
    if (character < 0x80) {
        text += static_cast<char>(character);
        return;
    }
    const int more = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    constexpr unsigned kLead[] = {0, 0xc0, 0xe0, 0xf0};
    text += static_cast<char>(kLead[more] | (character >> (6 * more)));
    for (int i = more - 1; i >= 0; --i) {
        text += static_cast<char>(0x80 | ((character >> (6 * i)) & 0x3f));
    }
}

}  // namespace

std::string Utf8Of(std::string_view utf16) {
    std::string text;
    for (Units units(utf16); !units.AtEnd();) {
        Append(text, TakeCharacter(units));
    }
    return text;
}

}  // namespace qv_notify::etcl
