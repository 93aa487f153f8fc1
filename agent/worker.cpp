#include "agent/worker.h"

#include <tao/PortableServer/PortableServer.h>

#include <pthread.h>

#include "agent/signal_mask.h"
#include "logging/corbalogutil.h"
#include "logging/quiet_log.h"

namespace NS_CORBA {

Worker::Worker(CORBA::ORB* orb) : m_orb(CORBA::ORB::_duplicate(orb)) {
    thr_mgr(&m_threadMgr);
}

Worker::~Worker() = default;

int Worker::close(u_long /*flags*/) {
    LogQuietly([] {
        TA_POS;
        TaTrace("thread:%lu ORB is closed!", static_cast<unsigned long>(pthread_self()));
    });
    return 0;
}

int Worker::svc() {
    BlockAllSignals();
    LogQuietly([] {
        TA_POS;
        TaTrace("thread:%lu ORB is runing!", static_cast<unsigned long>(pthread_self()));
    });
    while (!s_bWorkerStop) {
        RunOrbOnce();
        if (s_bWorkerStop) {
            LogQuietly([] {
                TA_POS;
                TaTrace("[Worker::svc] ORB return normally");
            });
            break;
        }
        LogQuietly([] {
            TA_POS;
            TaTrace("[Worker::svc] ORB return as unknown reason!,now restart it");
        });
    }
    return 0;
}

void Worker::RunOrbOnce() {
    try {
        m_orb->run();
    } catch (PortableServer::POAManager::AdapterInactive& ex) {
        LogQuietly([&ex] {
            TA_POS;
            TaException(
                ex, "[Worker::svc] Raised PortableServer::POAManager::AdapterInactive during running orb!");
        });
    } catch (CORBA::UserException& ex) {
        LogQuietly([&ex] {
            TA_POS;
            TaException(ex, "[Worker::svc] Raised CORBA::UserException during running orb!");
        });
    } catch (CORBA::SystemException& ex) {
        LogQuietly([&ex] {
            TA_POS;
            TaException(ex, "[Worker::svc] Raised SystemException during running orb!");
        });
    } catch (CORBA::Exception& ex) {
        LogQuietly([&ex] {
            TA_POS;
            TaException(ex, "[Worker::svc] Raised during running orb!");
        });
    } catch (...) {
        LogQuietly([] {
            TA_POS;
            TaTrace("[Worker::svc] Raised exception during running orb!");
        });
    }
}

}  // namespace NS_CORBA
