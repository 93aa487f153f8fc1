#include "upcall.h"

#include "null_strings.h"
#include "orb_internals.h"
#include "orb_state.h"
#include "outcome.h"
#include "thread_state.h"
#include "upcall_info.h"

namespace qv_orb {
namespace {

// Counts a remote request as being in a servant, from the first interception point to the last.
class InServant {
  public:
    InServant(ThreadState& thread, bool remote) : thread_(thread), counted_(remote && limit().limited()) {
        if (counted_) {
            limit().Enter();
            thread_.in_servant = true;
        }
    }
    ~InServant() {
        if (counted_) {
            thread_.in_servant = false;
            limit().Leave();
        }
    }
    InServant(const InServant&) = delete;
    InServant& operator=(const InServant&) = delete;

  private:
    static ServantLimit& limit() { return orb_state().servants; }

    ThreadState& thread_;
    const bool counted_;
};

// Collocated calls may be made within a remote one.
class InUpcall {
  public:
    InUpcall(ThreadState& thread, bool remote) : thread_(thread), before_(thread.in_remote_upcall) {
        thread_.in_remote_upcall = remote;
    }
    ~InUpcall() { thread_.in_remote_upcall = before_; }
    InUpcall(const InUpcall&) = delete;
    InUpcall& operator=(const InUpcall&) = delete;

  private:
    ThreadState& thread_;
    const bool before_;
};

void Serve(omniCallDescriptor& call, omniServant* servant, cdrStream* reply) {
    try {
        call.interceptedCall(servant);
    } catch (const CORBA::UserException& ex) {
        RefuseNullStrings(ex, reply);
        throw;
    }
    RefuseNullStrings(call, reply);
}

class InterceptedUpcall {
  public:
    InterceptedUpcall(omniCallDescriptor& call, omniServant& servant, omni::GIOP_S* request)
        : call_(call), servant_(servant), reply_(request), info_(call, servant, request) {}

    void Run() {
        const SlotScope slots(info_.slots());
        if (Start()) {
            CallServant();
        }
        Finish();
    }
    void Raise() const { outcome_.Raise(); }
    IOP::ServiceContextList& reply_contexts() { return info_.reply_contexts(); }

  private:
    // The starting points. False when one of them rejected the request.
    bool Start() {
        const auto& interceptors = orb_state().server_interceptors;
        try {
            info_.at(Point::kReceiveContexts);
            for (; started_ < interceptors.size(); ++started_) {
                interceptors[started_]->receive_request_service_contexts(&info_);
            }
            info_.at(Point::kReceiveRequest);
            for (const auto& interceptor : interceptors) {
                interceptor->receive_request(&info_);
            }
            return true;
        } catch (...) {
            outcome_.TakeFromInterceptor(true);
            return false;
        }
    }

    void CallServant() {
        try {
            Serve(call_, &servant_, reply_);
        } catch (...) {
            outcome_.TakeFromServant(call_);
        }
    }

    // The ending points of those interceptors that were started, the last first. Each sees how the request
    // stands after those ahead of it.
    void Finish() {
        while (started_ > 0) {
            PortableInterceptor::ServerRequestInterceptor_ptr interceptor =
                orb_state().server_interceptors[--started_];
            const bool may_forward = !outcome_.successful();
            try {
                EndingPoint(interceptor);
            } catch (...) {
                outcome_.TakeFromInterceptor(may_forward);
            }
        }
    }

    void EndingPoint(PortableInterceptor::ServerRequestInterceptor_ptr interceptor) {
        if (outcome_.successful()) {
            info_.at(Point::kSendReply);
            info_.success();
            interceptor->send_reply(&info_);
        } else if (outcome_.forwarded()) {
            info_.at(Point::kSendOther);
            info_.forward(outcome_.forward());
            interceptor->send_other(&info_);
        } else {
            info_.at(Point::kSendException);
            info_.exception(outcome_.exception(), outcome_.status());
            interceptor->send_exception(&info_);
        }
    }

    omniCallDescriptor& call_;
    omniServant& servant_;
    cdrStream* const reply_;
    UpcallInfo info_;
    Outcome outcome_;
    std::size_t started_ = 0;
};

}  // namespace

ThreadState& thread_state() {
    static thread_local ThreadState state;
    return state;
}

void InterceptUpcall(omniCallDescriptor* call, omniServant* servant) {
    ThreadState& thread = thread_state();
    const bool remote = thread.request != nullptr && thread.request->calldescriptor() == call;
    omni::GIOP_S* const request = remote ? thread.request : nullptr;
    const InServant counted(thread, remote);
    const InUpcall within(thread, remote);

    if (orb_state().server_interceptors.empty()) {
        Serve(*call, servant, request);
        return;
    }
    InterceptedUpcall upcall(*call, *servant, request);
    upcall.Run();
    if (remote && upcall.reply_contexts().length() != 0) {
        thread.reply_contexts = upcall.reply_contexts();
    }
    upcall.Raise();
}

}  // namespace qv_orb
