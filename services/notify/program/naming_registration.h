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
    struct Pauses {
        std::chrono::milliseconds retry{2000};        ///< while the name isn't bound
        std::chrono::milliseconds look_after{10000};  ///< between looks at a name that is
    };

    /// Starts a thread. `orb` and `log` have to outlive this.
    NamingRegistration(CORBA::ORB_ptr orb, CORBA::Object_ptr object, std::string name, OperatorLog& log,
                       Pauses pauses);
    /// Waits for the thread, as long as the naming service takes.
    ~NamingRegistration();
    NamingRegistration(const NamingRegistration&) = delete;
    NamingRegistration& operator=(const NamingRegistration&) = delete;

    /// Has the binding ended soon.
    void Stop();
    /// False when the naming service still keeps the thread waiting at `deadline`. After Stop.
    bool WaitUntilEnded(std::chrono::steady_clock::time_point deadline);

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
    const Pauses m_pauses;
    bool m_bound = false;  // used by the thread alone

    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_stopped = false;
    bool m_ended = false;
    std::thread m_thread;
};

}  // namespace qv_notify
