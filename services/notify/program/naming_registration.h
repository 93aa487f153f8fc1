// The name under which clients find the factory.
#pragma once

#include <tao/ORB.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "services/notify/delivery/operator_log.h"

namespace qv_notify {

/// Keeps an object bound in the naming service, whether that is up yet or not, and binds it again should its
/// name get lost. Ends the binding with itself.
class NamingRegistration {
  public:
    /// Starts a thread. `orb` and `log` have to outlive this.
    NamingRegistration(CORBA::ORB_ptr orb, CORBA::Object_ptr object, std::string name, OperatorLog& log);
    ~NamingRegistration();
    NamingRegistration(const NamingRegistration&) = delete;
    NamingRegistration& operator=(const NamingRegistration&) = delete;

  private:
    void Run();
    bool BoundStill() const;
    bool Bind();
    void Unbind() const;
    bool WaitFor(std::chrono::milliseconds pause);

    const CORBA::ORB_ptr m_orb;
    const CORBA::Object_var m_object;
    const std::string m_name;
    OperatorLog& m_log;
    bool m_bound = false;  // used by the thread alone

    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_stopped = false;
    std::thread m_thread;
};

}  // namespace qv_notify
