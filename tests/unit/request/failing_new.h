#pragma once

#include <cstddef>
#include <new>

namespace qv_test {

/// While it lives, `new (std::nothrow)` of exactly `size` bytes yields null in this thread. For a program
/// whose source defines it with QV_TEST_DEFINE_FAILING_NEW, and at most one of them at a time.
class FailingNew {
  public:
    explicit FailingNew(std::size_t size) { s_size = size; }
    ~FailingNew() { s_size = 0; }
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;

    static bool Fails(std::size_t size) { return s_size != 0 && size == s_size; }

  private:
    static inline thread_local std::size_t s_size = 0;
};

}  // namespace qv_test

/// The replacement of the global allocation function; it holds for the whole program, its shared libraries
/// included.
#define QV_TEST_DEFINE_FAILING_NEW                                         \
    void* operator new(std::size_t size, const std::nothrow_t&) noexcept { \
        if (qv_test::FailingNew::Fails(size)) {                            \
            return nullptr;                                                \
        }                                                                  \
        try {                                                              \
            return ::operator new(size);                                   \
        } catch (...) {                                                    \
            return nullptr;                                                \
        }                                                                  \
    }
