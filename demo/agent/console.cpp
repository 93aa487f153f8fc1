#include "demo/agent/console.h"

#include <iostream>
#include <mutex>

namespace qv_demo {

void Say(const std::string& line) {
    static std::mutex mutex;
    const std::lock_guard<std::mutex> guard(mutex);
    std::cout << line << std::endl;
}

}  // namespace qv_demo
