#include "standalone/random_bytes.h"

#include <sys/random.h>

#include <cerrno>
#include <random>

namespace qv_standalone {

void FillRandom(void* bytes, std::size_t size) {
    ssize_t got = 0;
    do {
        got = getrandom(bytes, size, 0);
    } while (got < 0 && errno == EINTR);
    if (got != static_cast<ssize_t>(size)) {
        // A kernel without getrandom, or a sandbox that forbids it.
        std::random_device device;
        for (std::size_t i = 0; i < size; ++i) {
            static_cast<unsigned char*>(bytes)[i] = static_cast<unsigned char>(device());
        }
    }
}

void AppendHex(std::string& text, const unsigned char* bytes, std::size_t size) {
    static constexpr char kDigits[] = "0123456789abcdef";
    for (std::size_t i = 0; i < size; ++i) {
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 0x0f];
    }
}

}  // namespace qv_standalone
