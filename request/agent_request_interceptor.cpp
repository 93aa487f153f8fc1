#include "request/agent_request_interceptor.h"

#include <cerrno>
#include <exception>
#include <new>

#include "agent/corbabaseagentconfig.h"
#include "logging/corbalogutil.h"
#include "logging/message_type.h"
#include "orb/portability.h"
#include "platform/huge_task_mgr.h"
#include "platform/thread_context.h"
#include "request/interceptor_log.h"
#include "request/request_interceptor_base.h"

namespace {

using NS_CORBA::kInterceptorSource;
using NS_CORBA::LogQuietly;

constexpr int kRefusedLine = 168;
constexpr int kReplyLine = 190;
constexpr int kReplyCorbaExceptionLine = 192;
constexpr int kReplyStdExceptionLine = 195;
constexpr int kReplyUnknownExceptionLine = 200;
constexpr int kExceptionLine = 219;
constexpr int kExceptionCorbaExceptionLine = 221;
constexpr int kExceptionUnknownExceptionLine = 225;

constexpr unsigned kNoMemoryLocation = 0x54410000;

NS_CORBA::RequestInterceptorBase* PluggedHooks() {
    NS_CORBA::CorbaBaseAgentConfig* const config = NS_CORBA::CorbaBaseAgentConfig::Instance();
    return config ? config->GetReqInterceptorImpl() : nullptr;
}

/// Drops the platform's record of the calling thread's huge task, if it runs one.
void EndHugeTask() {
    if (NS_UTIL::HugeTaskMgr::Instance()->IsSynHTsk()) {
        NS_UTIL::HugeTaskMgr::Instance()->RemoveHTskInfo(
            NS_UTIL::ThreadContextMgr::Instance()->GetThreadContext());
    }
}

}  // namespace

void Server_ORBInitializer::pre_init(PortableInterceptor::ORBInitInfo*) {}

void Server_ORBInitializer::post_init(PortableInterceptor::ORBInitInfo* info) {
    PortableInterceptor::ServerRequestInterceptor_var interceptor =
        new (std::nothrow) Server_Request_Interceptor(m_interceptorName.c_str());
    if (!interceptor.in()) {
        throw CORBA::NO_MEMORY(qv_orb::TaoMinorCode(kNoMemoryLocation, ENOMEM), CORBA::COMPLETED_NO);
    }
    info->add_server_request_interceptor(interceptor.in());
}

void Server_ORBInitializer::SetInterceptorName(const std::string& name) {
    m_interceptorName = name;
}

Server_Request_Interceptor::Server_Request_Interceptor(const char* name)
    : m_name(CORBA::string_dup(name ? name : "")) {
    LoadOperCounts();
}

Server_Request_Interceptor::~Server_Request_Interceptor() = default;

char* Server_Request_Interceptor::name() {
    return CORBA::string_dup(m_name.in());
}

void Server_Request_Interceptor::destroy() {}

void Server_Request_Interceptor::SetInterceptorName(const std::string& name) {
    m_name = CORBA::string_dup(name.c_str());
}

std::string Server_Request_Interceptor::GetInterceptorName() const {
    return m_name.in();
}

void Server_Request_Interceptor::receive_request_service_contexts(PortableInterceptor::ServerRequestInfo*) {}

void Server_Request_Interceptor::receive_request(PortableInterceptor::ServerRequestInfo* info) {
    // Read once, so that one request meets one and the same object in both hooks.
    NS_CORBA::RequestInterceptorBase* const hooks = PluggedHooks();
    if (!hooks) {
        LogQuietly(kRefusedLine, [] {
            NS_CORBA::TaDebugWithPara(
                1, "[Server_Request_Interceptor::receive_request] No Permission, Interceptor is null");
        });
        throw CORBA::NO_PERMISSION();
    }
    hooks->BeforeReceiveRequest(info);
    RecordOperCount(info);
    hooks->AfterReceiveRequest(info);
}

void Server_Request_Interceptor::send_reply(PortableInterceptor::ServerRequestInfo* info) {
    EndHugeTask();
    try {
        NS_CORBA::SetPos(kInterceptorSource, kReplyLine);
        NS_CORBA::TaWriteOperLog(info, NS_CORBA::kReplyMessage);
    } catch (CORBA::Exception& ex) {
        LogQuietly(kReplyCorbaExceptionLine, [&ex] {
            NS_CORBA::TaException(
                ex,
                "[Server_Request_Interceptor::send_reply] get CORBA exception whil writing reply "
                "operation log !");
        });
    } catch (const std::exception& ex) {
        LogQuietly(kReplyStdExceptionLine, [&ex] {
            NS_CORBA::TaDebugWithPara(
                0,
                "[Server_Request_Interceptor::send_reply] get  std::excpetion(%s) while "
                "writing reply operation log !",
                ex.what());
        });
    } catch (...) {
        LogQuietly(kReplyUnknownExceptionLine, [] {
            NS_CORBA::TaDebug(
                0,
                "[Server_Request_Interceptor::send_reply] get unknow excpetion while writing reply "
                "operation log !");
        });
    }
}

void Server_Request_Interceptor::send_exception(PortableInterceptor::ServerRequestInfo* info) {
    EndHugeTask();
    try {
        NS_CORBA::SetPos(kInterceptorSource, kExceptionLine);
        NS_CORBA::TaWriteOperLog(info, NS_CORBA::kExceptionMessage);
    } catch (CORBA::Exception& ex) {
        LogQuietly(kExceptionCorbaExceptionLine, [&ex] {
            NS_CORBA::TaException(
                ex,
                "[Server_Request_Interceptor::send_exception] get CORBA exception will writing "
                "exception operation log !");
        });
    } catch (...) {
        LogQuietly(kExceptionUnknownExceptionLine, [] {
            NS_CORBA::TaDebug(
                0,
                "[Server_Request_Interceptor::send_exception] get unknown exception while writing "
                "exception operation log !");
        });
    }
}

void Server_Request_Interceptor::send_other(PortableInterceptor::ServerRequestInfo*) {
    EndHugeTask();
}

void Server_Request_Interceptor::GetMgrAndIfName(std::string& mgrName, std::string& ifName,
                                                 PortableInterceptor::ServerRequestInfo* info) {
    mgrName.clear();
    ifName.clear();
    if (!info) {
        return;
    }
    const CORBA::String_var target = info->target_most_derived_interface();
    if (!target.in()) {
        return;
    }
    mgrName = target.in();
    const CORBA::String_var operation = info->operation();
    if (operation.in()) {
        ifName = operation.in();
    }
}
