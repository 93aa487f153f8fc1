#include "tools/secrets/wiper.h"

#include <string.h>

namespace qv_secrets {

void WipeText(char* secret) {
    if (secret != nullptr) {
        ::explicit_bzero(secret, ::strlen(secret));
    }
}

void Wipe(std::string& secret) {
    ::explicit_bzero(secret.data(), secret.size());
    secret.clear();
}

Wiper::~Wiper() {
    WipeText(text_);
    if (string_ != nullptr) {
        Wipe(*string_);
    }
}

}  // namespace qv_secrets
