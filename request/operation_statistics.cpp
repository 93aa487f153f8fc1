#include <ace/Guard_T.h>

#include <exception>
#include <locale>
#include <sstream>
#include <string>
#include <thread>

#include "agent/corbabaseagentconfig.h"
#include "logging/corbalogutil.h"
#include "logging/prepared_record.h"
#include "platform/environment.h"
#include "request/agent_request_interceptor.h"
#include "request/interceptor_log.h"

// The statistics of Server_Request_Interceptor: how often each operation was requested, kept in a text file
// that is read once, at the start, and rewritten after each counted request.

namespace {

using NS_CORBA::LogQuietly;

constexpr char kFileName[] = "/CORBAAgentStatisticInfo.dat";

constexpr int kLoadFailedLine = 77;
constexpr int kRequestLine = 113;
constexpr int kRequestCorbaExceptionLine = 134;
constexpr int kRequestStdExceptionLine = 138;
constexpr int kRequestUnknownExceptionLine = 143;

constexpr char kUnknownExceptionText[] =
    "[Server_Request_Interceptor::receive_request] get unknow excpetion while writing request operation log "
    "!";

/// Releases the lock only if it could be taken; the work goes on either way.
using StatisticsGuard = ACE_Guard<ACE_Thread_Mutex>;

/// Lets other threads run for a while as long as `lock` is held, and doesn't keep it: the guard takes it. A
/// record is made in microseconds, and for so long this is cheaper than to sleep and be woken.
void YieldWhileHeld(ACE_Thread_Mutex& lock) {
    constexpr int kTries = 20;
    for (int i = 0; i < kTries; ++i) {
        if (lock.tryacquire() == 0) {
            lock.release();
            return;
        }
        std::this_thread::yield();
    }
}

bool StatisticsEnabled() {
    NS_CORBA::CorbaBaseAgentConfig* const config = NS_CORBA::CorbaBaseAgentConfig::Instance();
    return config && config->IsInterceptorEnabled();
}

}  // namespace

void Server_Request_Interceptor::LoadOperCounts() {
    if (!StatisticsEnabled()) {
        return;
    }
    StatisticsGuard guard(m_statisticsLock);
    try {
        m_statisticsPath = NS_BUNDLEMGR1::GetNBILogPath() + kFileName;
        // Numbers in the file are plain digits, whatever locale the agent bundle has set.
        m_statisticsStream.imbue(std::locale::classic());
        m_statisticsStream.open(m_statisticsPath, std::ios::in);
        if (m_statisticsStream.is_open()) {
            ReadOperCounts();
        }
    } catch (...) {
        LogQuietly(kLoadFailedLine, [] { NS_CORBA::TaDebug(1, kUnknownExceptionText); });
    }
    if (m_statisticsStream.is_open()) {
        m_statisticsStream.close();
    }
}

void Server_Request_Interceptor::ReadOperCounts() {
    // Declared once for all lines: a line that stops short takes over what the line before it gave.
    std::string name;
    char separator = 0;
    unsigned long count = 0;
    std::string line;
    while (std::getline(m_statisticsStream, line)) {
        std::istringstream fields(line);
        fields.imbue(std::locale::classic());
        fields >> name >> separator >> count;
        if (!name.empty() && count != 0) {
            m_operCounts[name] = count;
        }
    }
}

void Server_Request_Interceptor::RecordOperCount(PortableInterceptor::ServerRequestInfo* info) {
    const CORBA::String_var operation = info->operation();
    NS_CORBA::PreparedRecord record(info, operation.in());
    YieldWhileHeld(m_statisticsLock);
    StatisticsGuard guard(m_statisticsLock);
    try {
        NS_CORBA::SetPos(NS_CORBA::kInterceptorSource, kRequestLine);
        record.Write();
        if (StatisticsEnabled()) {
            ++m_operCounts[operation.in() ? operation.in() : ""];
            WriteOperCounts();
        }
    } catch (CORBA::Exception& ex) {
        LogQuietly(kRequestCorbaExceptionLine, [&ex] {
            NS_CORBA::TaException(
                ex,
                "[Server_Request_Interceptor::receive_request] get CORBA exception while writing "
                "request operation log !");
        });
    } catch (const std::exception& ex) {
        LogQuietly(kRequestStdExceptionLine, [&ex] {
            NS_CORBA::TaDebugWithPara(
                1,
                "[Server_Request_Interceptor::receive_request] get std::excpetion while "
                "writing request operation log ! %s",
                ex.what());
        });
    } catch (...) {
        LogQuietly(kRequestUnknownExceptionLine, [] { NS_CORBA::TaDebug(1, kUnknownExceptionText); });
    }
    if (m_statisticsStream.is_open()) {
        m_statisticsStream.close();
    }
}

void Server_Request_Interceptor::WriteOperCounts() {
    m_statisticsStream.clear();
    m_statisticsStream.open(m_statisticsPath, std::ios::out);
    if (!m_statisticsStream.is_open()) {
        return;
    }
    for (const auto& entry : m_operCounts) {
        m_statisticsStream << entry.first << " = " << entry.second << '\n' << std::flush;
    }
    m_statisticsStream.close();
}
