// Whether this test runs under a sanitizer: programs are many times slower then, and freed memory is kept for
// a while.
#pragma once

namespace qv_test {

#ifdef __SANITIZE_THREAD__
inline constexpr bool kThreadsSanitized = true;
#else
inline constexpr bool kThreadsSanitized = false;
#endif

#ifdef __SANITIZE_ADDRESS__
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = kThreadsSanitized;
#endif

}  // namespace qv_test
