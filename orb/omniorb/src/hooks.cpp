#include "hooks.h"

#include <openssl/crypto.h>
#include <pthread.h>
#include <signal.h>

#include "orb_internals.h"
#include "plain_requests.h"
#include "request_gate.h"
#include "thread_state.h"
#include "upcall.h"

namespace qv_orb {
namespace {

CORBA::Boolean RequestReceived(omni::omniInterceptors::serverReceiveRequest_T::info_T& info) {
    ThreadState& thread = thread_state();
    thread.request = &info.giop_s;
    thread.reply_contexts.length(0);  // a oneway or a forward takes none along
    AdmitRequest(info.giop_s);
    return true;
}

void SendReplyContexts(omni::GIOP_S& request) {
    ThreadState& thread = thread_state();
    thread.request = nullptr;
    IOP::ServiceContextList& added = thread.reply_contexts;
    if (added.length() == 0) {
        return;
    }
    IOP::ServiceContextList& reply = request.service_contexts();
    const CORBA::ULong first = reply.length();
    reply.length(first + added.length());
    for (CORBA::ULong i = 0; i < added.length(); ++i) {
        reply[first + i] = added[i];
    }
    added.length(0);
}

CORBA::Boolean ReplySent(omni::omniInterceptors::serverSendReply_T::info_T& info) {
    SendReplyContexts(info.giop_s);
    return true;
}

CORBA::Boolean ExceptionSent(omni::omniInterceptors::serverSendException_T::info_T& info) {
    SendReplyContexts(info.giop_s);
    return true;
}

// A thread that serves connections leaves no trace of its last request behind.
// It reads nothing of a connection before the server is ready.
void UpcallThreadAssigned(omni::omniInterceptors::assignUpcallThread_T::info_T& info) {
    PassRequestGate();
    thread_state().request = nullptr;
    info.run();
    thread_state().request = nullptr;
}

void ThreadCreated(omni::omniInterceptors::createThread_T::info_T& info) {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
    info.run();
    // While destroy() waits for the thread; at its very end the process may have gone from under OpenSSL.
    OPENSSL_thread_stop();
}

// The ORB's interface has no virtual destructor; the one listener lives as long as the process.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): nobody deletes it
class DestructionListener final : public omni::omniInitialiser {
  public:
    explicit DestructionListener(void (*function)()) : function_(function) {}
    void attach() override {}
    void detach() override { function_(); }

  private:
    void (*const function_)();
};
#pragma GCC diagnostic pop

}  // namespace

void InstallHooks() {
    omni::omniInterceptors* hooks = omniORB::getInterceptors();
    hooks->createThread.add(ThreadCreated);
    hooks->assignUpcallThread.add(UpcallThreadAssigned);
    hooks->serverReceiveRequest.add(RequestReceived);
    hooks->serverSendReply.add(ReplySent);
    hooks->serverSendException.add(ExceptionSent);
    // The others go with their ORB; this one stays, and would be there twice.
    static const bool local_call_installed = [hooks] {
        hooks->invokeLocalCall.add(InterceptUpcall);
        return true;
    }();
    static_cast<void>(local_call_installed);
}

void OnOrbDestroyed(void (*function)()) {
    static DestructionListener listener(function);
    static const bool installed = [] {
        omni::omniInitialiser::install(&listener);
        return true;
    }();
    static_cast<void>(installed);
}

}  // namespace qv_orb
