#pragma once

namespace qv_test {

/// While it lives fork() fails with EAGAIN, from the `nth` call on.
class FailingFork {
  public:
    explicit FailingFork(int nth = 1);
    ~FailingFork();
    FailingFork(const FailingFork&) = delete;
    FailingFork& operator=(const FailingFork&) = delete;
};

/// While it lives ACE_OS::string_to_argv answers -1.
class FailingSplit {
  public:
    FailingSplit();
    ~FailingSplit();
    FailingSplit(const FailingSplit&) = delete;
    FailingSplit& operator=(const FailingSplit&) = delete;
};

}  // namespace qv_test
