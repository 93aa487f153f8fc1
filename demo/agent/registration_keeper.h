#pragma once

#include <tao/ORB.h>

#include <condition_variable>
#include <mutex>
#include <thread>

#include "demo/agent/core/registration_policy.h"

namespace qv_demo {

/// Keeps the session factory registered in the naming service: tries again in the background when the naming
/// service can't be reached, and registers anew when it came back without the name. Tells each change on
/// standard output.
class RegistrationKeeper {
  public:
    /// Registers at once and then goes on in a thread of its own until Stop or destruction.
    RegistrationKeeper(CORBA::Object_ptr factory, std::chrono::milliseconds check_interval);
    ~RegistrationKeeper();
    RegistrationKeeper(const RegistrationKeeper&) = delete;
    RegistrationKeeper& operator=(const RegistrationKeeper&) = delete;

    /// Waits for the call that may be under way.
    void Stop();

  private:
    void Run();
    void Register();
    void Look();
    BindingState Find() const;

    const CORBA::Object_var factory_;
    RegistrationPolicy policy_;
    std::mutex mutex_;
    std::condition_variable stopped_;
    bool stop_ = false;
    std::thread thread_;
};

/// The name of the session factory in the naming service as a person writes it: ids and kinds, parts by
/// slashes.
std::string FactoryNameText();

}  // namespace qv_demo
