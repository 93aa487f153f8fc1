#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

namespace qv_test {

/// What this program's own definitions of the configuration service's address list and of the system's name
/// resolution do. One test at a time.
struct SlowPlatform {
    std::vector<std::string> addresses;  ///< what GetIPAddressList delivers
    std::function<void()> onList;        ///< called in GetIPAddressList; may wait or raise
    std::atomic<int> lists{0};           ///< calls of GetIPAddressList
    std::atomic<int> resolutions{0};     ///< of the names of this program
    std::function<void()> onResolution;  ///< called in each of them

    void Reset();
};

/// "oss.test" is 10.1.2.3 and "both.test" is 2001:db8::1 and 10.1.2.6; "six.test" has no IPv4 address.
extern SlowPlatform g_platform;

}  // namespace qv_test
