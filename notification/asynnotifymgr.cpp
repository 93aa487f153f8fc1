#include "notification/asynnotifymgr.h"

#include <ace/Guard_T.h>
#include <ace/Message_Block.h>
#include <ace/Recursive_Thread_Mutex.h>
#include <ace/Static_Object_Lock.h>
#include <tao/ORB.h>

#include <pthread.h>

#include <memory>

#include "agent/worker.h"
#include "logging/corbalogutil.h"
#include "platform/secure_string.h"

namespace NS_CORBA {

namespace {

using SingletonGuard = ACE_Guard<ACE_Recursive_Thread_Mutex>;

constexpr std::size_t kTextSize = 250;
constexpr std::size_t kInitialMessageLength = 262144;
constexpr time_t kTimeoutSeconds = 100;

struct ReleaseBlock {
    void operator()(ACE_Message_Block* block) const { block->release(); }
};

AsynNotifyMgr* LoadInstance() {
    return __atomic_load_n(&AsynNotifyMgr::instance, __ATOMIC_ACQUIRE);
}

int ThreadNumber() {
    return static_cast<int>(pthread_self());
}

/// Traces what was printed into `text`, with `printed` as the result of that.
void TraceThread(const char* text, int printed) {
    if (printed < 0) {
        TA_POS;
        TaTrace("snprintf_s failed.");
    }
    TA_POS;
    TaTrace("%s", text);
}

}  // namespace

AsynNotifyMgr* AsynNotifyMgr::instance = nullptr;

NotifyCmd::~NotifyCmd() = default;

AsynNotifyMgr::AsynNotifyMgr() : m_timeout(kTimeoutSeconds) {
    // The queue's counter, not its limit: that is left at its default.
    msg_queue()->message_length(kInitialMessageLength);
}

AsynNotifyMgr::~AsynNotifyMgr() = default;

// The pointer is read and written as an atomic, so that a thread which sees it sees the whole object behind
// it.
AsynNotifyMgr* AsynNotifyMgr::Instance() {
    AsynNotifyMgr* manager = LoadInstance();
    if (manager) {
        return manager;
    }
    const SingletonGuard guard(*ACE_Static_Object_Lock::instance());
    manager = LoadInstance();
    if (!manager && guard.locked()) {
        manager = new AsynNotifyMgr;
        __atomic_store_n(&instance, manager, __ATOMIC_RELEASE);
    }
    return manager;
}

void AsynNotifyMgr::Destroy() {
    if (!LoadInstance()) {
        return;
    }
    const SingletonGuard guard(*ACE_Static_Object_Lock::instance());
    AsynNotifyMgr* const manager = LoadInstance();
    if (!manager) {
        return;
    }
    manager->wait();
    delete manager;
    __atomic_store_n(&instance, static_cast<AsynNotifyMgr*>(nullptr), __ATOMIC_RELEASE);
}

int AsynNotifyMgr::ExitThread() {
    AsynNotifyMgr* const manager = LoadInstance();
    return manager && manager->msg_queue() ? manager->msg_queue()->close() : 0;
}

int AsynNotifyMgr::Init() {
    open(nullptr);
    return 0;
}

int AsynNotifyMgr::open(void* /*args*/) {
    activate(THR_NEW_LWP, 1, 0, ACE_DEFAULT_THREAD_PRIORITY, -1);
    return 0;
}

int AsynNotifyMgr::close(u_long /*flags*/) {
    char text[kTextSize] = {};
    const int printed = snprintf_s(text, sizeof text, sizeof text - 1,
                                   "[AsynNotifyMgr::svc] AsynNotifyMgr Thread %d  exit!", ThreadNumber());
    TraceThread(text, printed);
    return 0;
}

int AsynNotifyMgr::svc() {
    char text[kTextSize] = {};
    const int printed = snprintf_s(text, sizeof text, sizeof text - 1,
                                   "[AsynNotifyMgr::svc] AsynNotifyMgr Thread %d  started!", ThreadNumber());
    TraceThread(text, printed);
    BlockAllSignals();
    while (RunNext()) {
    }
    return 0;
}

/// Waits for a command and runs it. False when the queue was closed.
bool AsynNotifyMgr::RunNext() {
    ACE_Message_Block* next = nullptr;
    if (msg_queue()->dequeue_head(next, nullptr) == -1) {
        return false;
    }
    if (!next) {
        return true;
    }
    auto* const raw = reinterpret_cast<NotifyCmd*>(next->base());
    if (!raw) {
        TA_POS;
        TaTrace("[AsynNotifyMgr::svc] TAAsyNotifyMgr get a null cmd!");
        return true;
    }
    const std::unique_ptr<NotifyCmd> command(raw);
    const std::unique_ptr<ACE_Message_Block, ReleaseBlock> block(next);
    try {
        if (command->adaptAndNotify() != 0) {
            TA_POS;
            TaTrace("[AsynNotifyMgr::svc] TAAsyNotifyMgr adapt And send Notify wrong!");
        }
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaException(ex, "[AsynNotifyMgr::svc] Exception raised during adaptAndNotify()!");
    }
    return true;
}

int AsynNotifyMgr::Push(NotifyCmd* cmd, int size) {
    if (!cmd) {
        TA_POS;
        TaTrace("[AsynNotifyMgr::Push] Get a null notifycmd object!");
        return -1;
    }
    AsynNotifyMgr* const manager = LoadInstance();
    if (!manager) {
        return -1;
    }
    // Refers to the command and doesn't own it. The sign of the size is extended on purpose.
    std::unique_ptr<ACE_Message_Block, ReleaseBlock> block(
        new ACE_Message_Block(reinterpret_cast<const char*>(cmd), static_cast<std::size_t>(size), 0));
    // A closed queue takes none; the caller isn't told, and the command stays as it is.
    if (manager->msg_queue()->enqueue_tail(block.get(), nullptr) != -1) {
        static_cast<void>(block.release());
    }
    return 0;
}

int Push(NotifyCmd* cmd, int size) {
    AsynNotifyMgr* const manager = AsynNotifyMgr::Instance();
    return manager ? manager->Push(cmd, size) : -1;
}

}  // namespace NS_CORBA
