#pragma once

#include <string>

#include "platform/export.h"

namespace NS_UTIL {

/// Small helpers of the utility library. Stateless: any thread may call any operation.
class QV_API SelfUtilCommon {
  public:
    SelfUtilCommon(const SelfUtilCommon&) = delete;
    SelfUtilCommon& operator=(const SelfUtilCommon&) = delete;

    /// The only instance, never null, owned by the library.
    static SelfUtilCommon* Instance();

    /// The process's environment value of that name, empty when it isn't set.
    static std::string getEnvValue(const std::string& name);

    /// The text between the first `beginTag` and the next `endTag` behind it; empty when either is missing.
    /// `beginTagLength` is the length of `beginTag` in bytes.
    std::string GetValByTag(const std::string& text, const std::string& beginTag, const std::string& endTag,
                            const int& beginTagLength);

  private:
    SelfUtilCommon();
    ~SelfUtilCommon();
};

}  // namespace NS_UTIL
