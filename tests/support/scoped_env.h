#pragma once

#include <stdlib.h>

#include <optional>
#include <string>
#include <utility>

namespace qv_test {

/// Sets (or, without a value, unsets) one variable of this process's environment, and restores it at the end.
class ScopedEnv {
  public:
    ScopedEnv(std::string name, const std::optional<std::string>& value) : m_name(std::move(name)) {
        if (const char* former = getenv(m_name.c_str())) {
            m_former = former;
        }
        Set(value);
    }
    ~ScopedEnv() { Set(m_former); }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

  private:
    void Set(const std::optional<std::string>& value) const {
        if (value) {
            setenv(m_name.c_str(), value->c_str(), 1);
        } else {
            unsetenv(m_name.c_str());
        }
    }

    const std::string m_name;
    std::optional<std::string> m_former;
};

}  // namespace qv_test
