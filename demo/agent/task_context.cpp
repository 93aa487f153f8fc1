#include "demo/agent/task_context.h"

#include <tao/LocalObject.h>
#include <tao/ORBInitializer_Registry.h>

#include <utility>
#include <vector>

#include "platform/self_util_common.h"
#include "platform/thread_context.h"
#include "request/te_user_helper.h"
#include "standalone/thread_setup.h"

namespace qv_demo {
namespace {

constexpr const char* kNobody = "(none)";
constexpr const char* kThisProcess = "this process";

struct Task {
    std::string user_info;
    std::string interface_name;
    std::string address;
};

// A request stays on one thread to its end.
thread_local std::string caller_address;
thread_local std::vector<Task> outer_tasks;

void KeepOuterTask() {
    const NS_UTIL::ThreadContextInfo context = NS_UTIL::ThreadContextMgr::Instance()->GetThreadContext();
    outer_tasks.push_back({context.GetUserInfo(), context.GetInterfaceName(), std::move(caller_address)});
    caller_address.clear();
}

void ReturnToOuterTask() {
    Task outer = std::move(outer_tasks.back());
    outer_tasks.pop_back();
    caller_address = std::move(outer.address);
    if (outer.interface_name.empty()) {
        qv_standalone::ClearThreadContext();
    } else {
        qv_standalone::SetThreadContext(outer.user_info, outer.interface_name);
    }
}

/// Begins each request without a task, and ends its task at the last interception point of all.
class TaskKeeper : public virtual PortableInterceptor::ServerRequestInterceptor {
  public:
    char* name() override { return CORBA::string_dup("TaskKeeper"); }
    void destroy() override {}
    void receive_request_service_contexts(PortableInterceptor::ServerRequestInfo*) override {
        KeepOuterTask();
    }
    void receive_request(PortableInterceptor::ServerRequestInfo*) override {}
    void send_reply(PortableInterceptor::ServerRequestInfo*) override { ReturnToOuterTask(); }
    void send_exception(PortableInterceptor::ServerRequestInfo*) override { ReturnToOuterTask(); }
    void send_other(PortableInterceptor::ServerRequestInfo*) override { ReturnToOuterTask(); }
};

class TaskKeeperInitializer : public virtual PortableInterceptor::ORBInitializer,
                              public virtual CORBA::LocalObject {
  public:
    void pre_init(PortableInterceptor::ORBInitInfo*) override {}
    void post_init(PortableInterceptor::ORBInitInfo* info) override {
        PortableInterceptor::ServerRequestInterceptor_var interceptor = new TaskKeeper;
        info->add_server_request_interceptor(interceptor.in());
    }
};

/// The user whose session the request belongs to.
std::string User() {
    static const std::string kBegin = "<USERNAME_TAG>";
    static const std::string kEnd = "</USERNAME_TAG>";
    const std::string user = NS_UTIL::SelfUtilCommon::Instance()->GetValByTag(
        NS_CORBA::TEUserHelper::GetNmsIPAddrByContext(), kBegin, kEnd, static_cast<int>(kBegin.size()));
    return user.empty() ? kNobody : user;
}

/// "EmsSession_I" of "IDL:mtnm.tmforum.org/emsSession/EmsSession_I:1.0".
std::string ShortName(const std::string& repository_id) {
    const std::string name = repository_id.substr(0, repository_id.rfind(':'));
    const std::size_t slash = name.find_last_of("/:");
    return slash == std::string::npos ? name : name.substr(slash + 1);
}

}  // namespace

void BeginTask(PortableInterceptor::ServerRequestInfo* info, const std::string& address) {
    caller_address = address;
    const CORBA::String_var interface = info->target_most_derived_interface();
    const CORBA::String_var operation = info->operation();
    qv_standalone::SetThreadContext("[" + User() + "][" + (address.empty() ? kThisProcess : address) + "]",
                                    ShortName(interface.in()) + "/" + operation.in());
}

std::string CallerAddress() {
    return caller_address;
}

void RegisterTaskContext() {
    PortableInterceptor::ORBInitializer_var initializer = new TaskKeeperInitializer;
    PortableInterceptor::register_orb_initializer(initializer.in());
}  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): the ORB counts the reference

}  // namespace qv_demo
