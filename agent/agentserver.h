#pragma once

#include <ace/Condition_T.h>
#include <ace/Condition_Thread_Mutex.h>
#include <ace/Thread_Mutex.h>

#include <atomic>

#include "platform/export.h"

namespace NS_CORBA {

/// Runs and stops the ORB of CorbaBaseAgentConfig. All operations are static and belong after a true result
/// of CorbaBaseAgentConfig::Init. Activate and Run are called by the bundle's server thread; Discard,
/// ShutDown and Destroy by any other thread, in that order. The threads of a pool stay until the process ends
/// and log each return from the ORB: with a pool CorbaLogMgr::Destroy, beside which nobody may log, is left
/// out. No CORBA::Exception leaves Activate, Discard, ShutDown or Destroy; Run lets through what isn't a
/// CORBA::SystemException.
class QV_API AgentServer {
  public:
    AgentServer() = delete;

    /// Opens the root POA's manager: requests are served as soon as a thread runs the ORB. 0, or -1 on
    /// failure.
    static int Activate();

    /// Makes the root POA's manager refuse new requests and waits for those in progress. 0, or -1 on failure.
    static int Discard();

    /// Runs the ORB, in this thread or in a pool as configured, with all signals blocked. Blocks: without the
    /// pool until ShutDown, with the pool for the rest of the process. 0, or -1 when the ORB raised.
    static int Run();

    /// Run() for thread start routines: ignores the result and returns 0.
    static int AgentWorker();

    /// Hook without work; returns 0.
    static int DoOtherWork();

    /// Tells the ORB to shut down without waiting for its requests, then, with the pool on, waits up to six
    /// seconds for Run to finish.
    static void ShutDown();

    /// Destroys the ORB and ends the companion services.
    static void Destroy();

    static std::atomic<bool> m_bExit;           ///< the pool has ended; set by Run, never cleared
    static ACE_Thread_Mutex m_mutexORBDestroy;  ///< to be held while waiting for m_condORBDestroy
    static ACE_Condition<ACE_Thread_Mutex> m_condORBDestroy;  ///< signalled when m_bExit becomes true
};

}  // namespace NS_CORBA
