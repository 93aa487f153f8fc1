#include "notification/asynnotifymgr.h"

#include <ace/Message_Block.h>
#include <tao/ORB.h>

#include <pthread.h>

#include <memory>

#include "agent/signal_mask.h"
#include "agent/singleton.h"
#include "logging/corbalogutil.h"
#include "logging/quiet_log.h"
#include "platform/secure_string.h"

namespace NS_CORBA {

namespace {

constexpr std::size_t kTextSize = 250;
constexpr std::size_t kInitialMessageLength = 262144;
constexpr time_t kTimeoutSeconds = 100;

struct ReleaseBlock {
    void operator()(ACE_Message_Block* block) const { block->release(); }
};

int ThreadNumber() {
    return static_cast<int>(pthread_self());
}

/// Traces what was printed into `text`, with `printed` as the result of that.
void TraceThread(const char* text, int printed) {
    LogQuietly([printed] {
        if (printed < 0) {
            TA_POS;
            TaTrace("snprintf_s failed.");
        }
    });
    LogQuietly([text] {
        TA_POS;
        TaTrace("%s", text);
    });
}

/// Runs `command`; that it failed, or raised what the ORB raises, goes to the log.
void Run(NotifyCmd& command) {
    try {
        if (command.adaptAndNotify() == 0) {
            return;
        }
    } catch (CORBA::Exception& ex) {
        LogQuietly([&ex] {
            TA_POS;
            TaException(ex, "[AsynNotifyMgr::svc] Exception raised during adaptAndNotify()!");
        });
        return;
    }
    LogQuietly([] {
        TA_POS;
        TaTrace("[AsynNotifyMgr::svc] TAAsyNotifyMgr adapt And send Notify wrong!");
    });
}

}  // namespace

AsynNotifyMgr* AsynNotifyMgr::instance = nullptr;

NotifyCmd::~NotifyCmd() = default;

AsynNotifyMgr::AsynNotifyMgr() : m_timeout(kTimeoutSeconds) {
    // The queue's counter, not its limit: that is left at its default.
    msg_queue()->message_length(kInitialMessageLength);
}

AsynNotifyMgr::~AsynNotifyMgr() = default;

AsynNotifyMgr* AsynNotifyMgr::Instance() {
    return CreateOnce(instance, [] { return new AsynNotifyMgr; });
}

void AsynNotifyMgr::Destroy() {
    if (!LoadInstance(instance)) {
        return;
    }
    const SingletonGuard guard(*ACE_Static_Object_Lock::instance());
    AsynNotifyMgr* const manager = LoadInstance(instance);
    if (!manager) {
        return;
    }
    manager->wait();  // its commands may push meanwhile
    delete TakeInstance(instance);
}

int AsynNotifyMgr::ExitThread() {
    AsynNotifyMgr* const manager = LoadInstance(instance);
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
        LogQuietly([] {
            TA_POS;
            TaTrace("[AsynNotifyMgr::svc] TAAsyNotifyMgr get a null cmd!");
        });
        return true;
    }
    const std::unique_ptr<NotifyCmd> command(raw);
    const std::unique_ptr<ACE_Message_Block, ReleaseBlock> block(next);
    Run(*command);
    return true;
}

int AsynNotifyMgr::Push(NotifyCmd* cmd, int size) {
    if (!cmd) {
        TA_POS;
        TaTrace("[AsynNotifyMgr::Push] Get a null notifycmd object!");
        return -1;
    }
    AsynNotifyMgr* const manager = LoadInstance(instance);
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
