#pragma once

#include <ace/Task.h>
#include <ace/Thread_Manager.h>
#include <tao/ORB.h>

namespace NS_CORBA {

/// Would make the pool threads leave their run loop. Nothing sets it: a pool thread lasts as long as the
/// process.
extern bool s_bWorkerStop;

/// Number of threads of the pool: 0 in the settings stands for 4.
constexpr unsigned int PoolThreadCount(unsigned int configured) {
    return configured == 0 ? 4 : configured;
}

/// The thread pool that runs the ORB. It keeps a reference of its own to the ORB, so that a thread that
/// enters run() after the ORB was destroyed meets an exception and not freed memory.
class Worker : public ACE_Task_Base {
  public:
    /// Takes its own reference to `orb`; the caller keeps the one it has.
    explicit Worker(CORBA::ORB* orb);
    ~Worker() override;

    int close(u_long flags = 0) override;

    /// One pool thread: enters orb->run() again, without pause, however it was left.
    int svc() override;

  private:
    /// One run() with every exception logged and swallowed.
    void RunOrbOnce();

    CORBA::ORB_var m_orb;
    ACE_Thread_Manager m_threadMgr;  // of its own: waiting on it waits for this pool's threads alone
};

}  // namespace NS_CORBA
