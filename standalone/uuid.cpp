#include "standalone/uuid.h"

#include <array>

#include "standalone/random_bytes.h"

namespace qv_standalone {

std::string RandomUUID() {
    std::array<unsigned char, 16> bytes{};
    FillRandom(bytes.data(), bytes.size());
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0f) | 0x40);  // version 4
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3f) | 0x80);  // the RFC's variant
    std::string text;
    text.reserve(36);
    std::size_t at = 0;
    for (const std::size_t size : {4, 2, 2, 2, 6}) {
        if (at > 0) {
            text += '-';
        }
        AppendHex(text, bytes.data() + at, size);
        at += size;
    }
    return text;
}

}  // namespace qv_standalone
