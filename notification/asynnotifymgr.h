#pragma once

#include <ace/Task_T.h>
#include <ace/Thread_Manager.h>
#include <ace/Time_Value.h>

#include "platform/export.h"

namespace NS_CORBA {

/// Slow notification work, wrapped for AsynNotifyMgr. Made by the agent bundle with `new`.
class QV_API NotifyCmd {
  public:
    virtual ~NotifyCmd();

    /// Does the work, on the command thread with all signals blocked. Commands never overlap; one that hangs
    /// stops all behind it.
    /// @return 0 on success. A failure, or a CORBA::Exception, is logged and the command dropped; any other
    ///         exception ends the process.
    virtual int adaptAndNotify() = 0;
};

/// Runs commands on one thread of its own, in the order of their arrival.
///
/// A bundle's order: Instance(), Init(), any number of Push(), ExitThread(), Destroy(). Push() may be called
/// by any thread, by a command too unless the queue is full; the rest belongs to one thread of the bundle.
/// Commands that still wait when the queue is closed are neither run nor deleted.
///
/// Destroy() waits for the thread under the one lock under which every singleton is made: every singleton
/// that a command asks for must exist by then, or the two wait for each other. CorbaLogMgr, which the thread
/// logs through to its end, goes last.
class QV_API AsynNotifyMgr : public ACE_Task<ACE_MT_SYNCH, ACE_System_Time_Policy> {
  public:
    AsynNotifyMgr();
    ~AsynNotifyMgr() override;

    /// The only instance, made by the first call. Null only when the creation lock can't be taken.
    static AsynNotifyMgr* Instance();
    /// Waits for the thread to end, then deletes the instance, if there is one. Never returns while the
    /// thread runs and the queue is open: call ExitThread() first. No thread but this one's own may be in
    /// Push() when it begins, or enter it then.
    static void Destroy();
    /// Closes the queue, which ends the thread once its current command is done.
    /// @return what closing the queue gave, which is -1 for failure; 0 without an instance
    static int ExitThread();

    /// Starts the thread. Always 0.
    int Init();
    /// Starts the thread. Always 0, whatever came of it.
    int open(void* args = nullptr) override;
    /// Called at the thread's end. Always 0.
    int close(u_long flags = 0) override;
    /// What the thread runs. Always 0.
    int svc() override;

    /// Appends a command to the queue of the one instance, and waits as long as the queue is full: while the
    /// sizes of what waits in it sum up to 16,384 or more.
    /// @param cmd belongs to the thread from the moment it is taken out of the queue
    /// @param size how much of the queue the command takes; with 0 this never waits. A negative one fills the
    ///        queue at once.
    /// @return 0, also when the queue is closed and the command is lost with it; -1 for a null `cmd`, or when
    ///         there is no instance
    int Push(NotifyCmd* cmd, int size);

    static AsynNotifyMgr* instance;  ///< what Instance() has made; null before

  private:
    bool RunNext();

    ACE_Thread_Manager m_threadManager;  // the task is not attached to it
    ACE_Time_Value m_timeout;            // nothing reads it
};

/// AsynNotifyMgr::Push of the one instance, which is made if need be.
QV_API int Push(NotifyCmd* cmd, int size);

}  // namespace NS_CORBA
