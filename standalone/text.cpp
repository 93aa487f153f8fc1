#include "platform/text.h"

namespace NS_UTIL {

bool IsDigit(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

}  // namespace NS_UTIL
