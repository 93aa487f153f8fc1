#pragma once

#include <tao/ORB.h>

#include <functional>

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

/// While it lives the system doesn't tell its node name.
class FailingNodeName {
  public:
    FailingNodeName();
    ~FailingNodeName();
    FailingNodeName(const FailingNodeName&) = delete;
    FailingNodeName& operator=(const FailingNodeName&) = delete;
};

/// While it lives OpenSSL makes no context for a verification, or makes it and refuses to set it up.
class FailingVerification {
  public:
    enum Step { kNone, kNoContext, kNoStart };

    explicit FailingVerification(Step step);
    ~FailingVerification();
    FailingVerification(const FailingVerification&) = delete;
    FailingVerification& operator=(const FailingVerification&) = delete;
};

/// While it lives CORBA::ORB_init is `init`.
class ReplacedOrbInit {
  public:
    using Function = std::function<CORBA::ORB_ptr(int& argc, char** argv, const char* id)>;

    explicit ReplacedOrbInit(Function init);
    ~ReplacedOrbInit();
    ReplacedOrbInit(const ReplacedOrbInit&) = delete;
    ReplacedOrbInit& operator=(const ReplacedOrbInit&) = delete;
};

/// While it lives CORBA::ORB::create_policy is `create`, for each ORB.
class ReplacedCreatePolicy {
  public:
    using Function = std::function<CORBA::Policy_ptr(CORBA::PolicyType type, const CORBA::Any& value)>;

    explicit ReplacedCreatePolicy(Function create);
    ~ReplacedCreatePolicy();
    ReplacedCreatePolicy(const ReplacedCreatePolicy&) = delete;
    ReplacedCreatePolicy& operator=(const ReplacedCreatePolicy&) = delete;
};

}  // namespace qv_test
