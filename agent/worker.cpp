#include "agent/worker.h"

#include <tao/PortableServer/PortableServer.h>

#include <cerrno>
#include <csignal>

#include "logging/corbalogutil.h"

namespace NS_CORBA {

void BlockAllSignals() {
    sigset_t signals;
    sigfillset(&signals);
    const int result = pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    if (result != 0) {
        errno = result;
    }
}

Worker::Worker(CORBA::ORB* orb) : m_orb(CORBA::ORB::_duplicate(orb)) {
    thr_mgr(&m_threadMgr);
}

Worker::~Worker() = default;

int Worker::close(u_long /*flags*/) {
    TA_POS;
    TaTrace("thread:%lu ORB is closed!", static_cast<unsigned long>(pthread_self()));
    return 0;
}

int Worker::svc() {
    BlockAllSignals();
    TA_POS;
    TaTrace("thread:%lu ORB is runing!", static_cast<unsigned long>(pthread_self()));
    while (!s_bWorkerStop) {
        RunOrbOnce();
        if (s_bWorkerStop) {
            TA_POS;
            TaTrace("[Worker::svc] ORB return normally");
            break;
        }
        TA_POS;
        TaTrace("[Worker::svc] ORB return as unknown reason!,now restart it");
    }
    return 0;
}

void Worker::RunOrbOnce() {
    try {
        m_orb->run();
    } catch (PortableServer::POAManager::AdapterInactive& ex) {
        TA_POS;
        TaException(ex,
                    "[Worker::svc] Raised PortableServer::POAManager::AdapterInactive during running orb!");
    } catch (CORBA::UserException& ex) {
        TA_POS;
        TaException(ex, "[Worker::svc] Raised CORBA::UserException during running orb!");
    } catch (CORBA::SystemException& ex) {
        TA_POS;
        TaException(ex, "[Worker::svc] Raised SystemException during running orb!");
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(ex, "[Worker::svc] Raised during running orb!");
    } catch (...) {
        TA_POS;
        TaTrace("[Worker::svc] Raised exception during running orb!");
    }
}

}  // namespace NS_CORBA
