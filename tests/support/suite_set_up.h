#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace qv_test {

/// Does what a test suite needs once. Where that fails, the process ends: otherwise the suite's tests would
/// count as skipped, and a whole suite could be missing without anybody being told.
template <class Work>
void SetUpSuite(Work work) noexcept {
    work();
    if (testing::Test::HasFailure()) {
        std::fflush(stdout);
        std::abort();
    }
}

}  // namespace qv_test
