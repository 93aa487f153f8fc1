// Whether this test runs under a sanitizer: programs are many times slower then, and freed memory is kept for
// a while.
#pragma once

namespace qv_test {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

}  // namespace qv_test
