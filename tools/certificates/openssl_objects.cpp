#include "tools/certificates/openssl_objects.h"

#include <openssl/err.h>

namespace qv_tools {

std::runtime_error OpenSslError(const std::string& what) {
    char reason[256] = "unknown reason";
    if (const unsigned long error = ERR_peek_last_error(); error != 0) {
        ERR_error_string_n(error, reason, sizeof reason);
    }
    ERR_clear_error();
    return std::runtime_error(what + ": " + reason);
}

}  // namespace qv_tools
