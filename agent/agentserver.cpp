#include "agent/agentserver.h"

#include <ace/Guard_T.h>
#include <ace/OS_NS_sys_time.h>
#include <ace/Time_Value.h>
#include <tao/ORB.h>
#include <tao/PortableServer/PortableServer.h>

#include <pthread.h>

#include "agent/corbabaseagentconfig.h"
#include "agent/signal_mask.h"
#include "agent/worker.h"
#include "logging/corbalogutil.h"
#include "platform/secure_string.h"

namespace NS_CORBA {

std::atomic<bool> AgentServer::m_bExit{false};
ACE_Thread_Mutex AgentServer::m_mutexORBDestroy;
ACE_Condition<ACE_Thread_Mutex> AgentServer::m_condORBDestroy(AgentServer::m_mutexORBDestroy);

namespace {

constexpr int kShutDownPasses = 6;
constexpr int kShutDownPassSeconds = 1;

/// The manager of the root POA; nil when there is no root POA.
PortableServer::POAManager_var RootPoaManager() {
    PortableServer::POA_var root = CorbaBaseAgentConfig::Instance()->GetRootPoa();
    return CORBA::is_nil(root.in()) ? PortableServer::POAManager::_nil() : root->the_POAManager();
}

constexpr std::size_t kThreadTextSize = 250;

int ThreadNumber() {
    return static_cast<int>(pthread_self());
}

void TraceFormatted(int formatted, const char* text) {
    if (formatted < 0) {
        TA_POS;
        TaTrace("snprintf_s failed.");
    }
    TA_POS;
    TaTrace("%s", text);
}

void TraceStart() {
    char text[kThreadTextSize] = {};
    const int formatted = snprintf_s(text, sizeof(text), sizeof(text) - 1,
                                     "[AgentServer::Run] Corba ORB Thread %d start!", ThreadNumber());
    TraceFormatted(formatted, text);
}

void TraceExit() {
    char text[kThreadTextSize] = {};
    const int formatted = snprintf_s(text, sizeof(text), sizeof(text) - 1,
                                     "[AgentServer::Run] Corba ORB Thread %d exit!", ThreadNumber());
    TraceFormatted(formatted, text);
}

/// Serves with a pool until its threads end. False when the threads could not be had.
bool RunPool(CORBA::ORB* orb, unsigned int threads) {
    Worker worker(orb);
    if (worker.activate(THR_NEW_LWP | THR_JOINABLE, static_cast<int>(threads), 0, ACE_DEFAULT_THREAD_PRIORITY,
                        -1) != 0) {
        TA_POS;
        TaTrace("[AgentServer::Run] ORB::run() failed!");
        return false;
    }
    worker.thr_mgr()->wait(nullptr, false, true);
    AgentServer::m_bExit = true;
    AgentServer::m_condORBDestroy.signal();
    return true;
}

void AwaitExit() {
    for (int pass = 0; pass < kShutDownPasses; ++pass) {
        // Not by time(), which may lag behind the clock of the wait and give a deadline that has passed
        // already.
        const ACE_Time_Value deadline = ACE_OS::gettimeofday() + ACE_Time_Value(kShutDownPassSeconds);
        ACE_Guard<ACE_Thread_Mutex> guard(AgentServer::m_mutexORBDestroy);
        if (AgentServer::m_condORBDestroy.wait(&deadline) == 0) {
            return;
        }
        guard.release();
        if (AgentServer::m_bExit) {
            return;
        }
    }
}

}  // namespace

int AgentServer::Activate() {
    try {
        PortableServer::POAManager_var manager = RootPoaManager();
        if (CORBA::is_nil(manager.in())) {
            return -1;
        }
        manager->activate();
        return 0;
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(ex, "[AgentServer::Activate] Raised during activating POAManager!");
        return -1;
    }
}

int AgentServer::Discard() {
    try {
        PortableServer::POAManager_var manager = RootPoaManager();
        if (CORBA::is_nil(manager.in())) {
            return -1;
        }
        manager->discard_requests(true);
        return 0;
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(ex, "[AgentServer::Discard] Raised during discard_requests!");
        return -1;
    }
}

int AgentServer::Run() {
    BlockAllSignals();
    TraceStart();
    try {
        CorbaBaseAgentConfig* config = CorbaBaseAgentConfig::Instance();
        CORBA::ORB_var orb = config->GetOrb();
        if (!config->ORBThreadPool()) {
            orb->run();
        } else if (!RunPool(orb.in(), PoolThreadCount(config->GetORBThrdNum()))) {
            return 0;
        }
        TraceExit();
        return 0;
    } catch (CORBA::SystemException& ex) {
        TA_POS;
        TaException(ex, "[AgentServer::Run] Raised during running orb!");
        return -1;
    }
}

int AgentServer::AgentWorker() {
    Run();
    return 0;
}

int AgentServer::DoOtherWork() {
    return 0;
}

void AgentServer::ShutDown() {
    try {
        CorbaBaseAgentConfig* config = CorbaBaseAgentConfig::Instance();
        CORBA::ORB_var orb = config->GetOrb();
        if (CORBA::is_nil(orb.in())) {
            return;
        }
        orb->shutdown(false);
        if (config->ORBThreadPool() && !m_bExit) {
            AwaitExit();
        }
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(ex, "[AgentServer::Destroy] Raised during shutdown orb!");
    }
}

void AgentServer::Destroy() {
    CorbaBaseAgentConfig* config = CorbaBaseAgentConfig::Instance();
    CORBA::ORB_var orb = config->GetOrb();
    if (!CORBA::is_nil(orb.in())) {
        try {
            orb->destroy();
        } catch (CORBA::Exception& ex) {
            TA_POS;
            TaException(ex, "[AgentServer::Destroy] Raised during destroying orb!");
        }
    }
    config->DestroyService();
}

}  // namespace NS_CORBA
