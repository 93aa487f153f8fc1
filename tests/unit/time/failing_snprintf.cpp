#include "tests/unit/time/failing_snprintf.h"

#include <atomic>

#include "platform/secure_string.h"

namespace qv_test {

namespace {

std::atomic<bool> g_failing{false};

}  // namespace

FailingSnprintf::FailingSnprintf() {
    g_failing = true;
}

FailingSnprintf::~FailingSnprintf() {
    g_failing = false;
}

}  // namespace qv_test

// Takes the place of the platform's own when the program is loaded.
int snprintf_s(char* dest, std::size_t size, std::size_t count, const char* format, ...) {
    if (qv_test::g_failing) {
        return -1;
    }
    std::va_list args;
    va_start(args, format);
    const int result = vsnprintf_s(dest, size, count, format, args);
    va_end(args);
    return result;
}
