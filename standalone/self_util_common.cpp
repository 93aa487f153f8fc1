#include "platform/self_util_common.h"

#include <cstdlib>

namespace NS_UTIL {

SelfUtilCommon::SelfUtilCommon() = default;
SelfUtilCommon::~SelfUtilCommon() = default;

SelfUtilCommon* SelfUtilCommon::Instance() {
    static auto* const instance = new SelfUtilCommon;
    return instance;
}

std::string SelfUtilCommon::getEnvValue(const std::string& name) {
    const char* const value = std::getenv(name.c_str());
    return value == nullptr ? "" : value;
}

std::string SelfUtilCommon::GetValByTag(const std::string& text, const std::string& beginTag,
                                        const std::string& endTag, const int& beginTagLength) {
    const std::size_t tag = text.find(beginTag);
    if (tag == std::string::npos || beginTagLength < 0) {
        return "";
    }
    const std::size_t begin = tag + static_cast<std::size_t>(beginTagLength);
    const std::size_t end = text.find(endTag, begin);
    return end == std::string::npos ? "" : text.substr(begin, end - begin);
}

}  // namespace NS_UTIL
