#include "services/notify/store/stored.h"

#include <sodium.h>

namespace qv_notify {
namespace {

constexpr std::size_t kDigestBytes = 16;

}  // namespace

std::string DigestOf(const std::string& octets) {
    static const int ready = sodium_init();  // picks the fastest code for this machine
    static_cast<void>(ready);
    unsigned char digest[kDigestBytes];
    crypto_generichash(digest, sizeof digest, reinterpret_cast<const unsigned char*>(octets.data()),
                       octets.size(), nullptr, 0);
    return std::string(digest, digest + sizeof digest);
}

}  // namespace qv_notify
