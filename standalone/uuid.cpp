#include "standalone/uuid.h"

#include <sys/random.h>

#include <array>
#include <cerrno>
#include <random>

namespace qv_standalone {
namespace {

using Bytes = std::array<unsigned char, 16>;

Bytes RandomBytes() {
    Bytes bytes{};
    ssize_t got = 0;
    do {
        got = getrandom(bytes.data(), bytes.size(), 0);
    } while (got < 0 && errno == EINTR);
    if (got != static_cast<ssize_t>(bytes.size())) {
        // A kernel without getrandom, or a sandbox that forbids it.
        std::random_device device;
        for (unsigned char& byte : bytes) {
            byte = static_cast<unsigned char>(device());
        }
    }
    return bytes;
}

}  // namespace

std::string RandomUUID() {
    static constexpr char kDigits[] = "0123456789abcdef";
    Bytes bytes = RandomBytes();
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0f) | 0x40);  // version 4
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3f) | 0x80);  // the RFC's variant
    std::string text;
    text.reserve(36);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            text += '-';
        }
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 0x0f];
    }
    return text;
}

}  // namespace qv_standalone
