#include "logging/logmgr.h"

#include "agent/singleton.h"
#include "logging/agent_orb.h"
#include "logging/corbalogutil.h"
#include "logging/log_writer.h"
#include "logging/service_lookup.h"
#include "platform/corba_config_items.h"
#include "platform/log_service.h"

namespace NS_CORBA {

namespace {

constexpr char kSourceFile[] = "logmgr";
constexpr int kLogCfgFailedLine = 348;

/// Opens `category` and gives its handle to `writer`. A log service that is absent or raises leaves the
/// channel closed.
template <class Record>
bool OpenChannel(LogWriter<Record>& writer, const char* category) {
    NS_LOG_SERVICE1::LogHandle* handle = nullptr;
    try {
        ServiceLookup<NS_LOG_SERVICE1::LogSvcInterface> lookup("LogSvcInterface");
        handle = lookup.Get().OpenLog("qv_corbaagent_bundle", "qv_corbaagent_corba", category);
    } catch (...) {
        handle = nullptr;
    }
    writer.Open(handle);
    return writer.IsOpen();
}

void ReadSwitch(const char* key, bool& on) {
    int value = 0;
    if (NS_BUNDLEMGR1::CorbaConfigItems::Instance()->GetIntItemInfo(key, value)) {
        on = value != 0;
    }
}

}  // namespace

CorbaLogMgr* CorbaLogMgr::m_pInstance = nullptr;

CorbaLogMgr::CorbaLogMgr() : m_ORB(AgentOrb()), m_pSysLog(nullptr) {
    // Here and not at the first log call, where several threads would meet in it.
    ts_init();
    m_pSysLog = new LogWriter<std::string>;
    m_pOperLog = new LogWriter<TALogRecord>;
    m_pNotifyLog = new LogWriter<TANotifyRecord>;
    m_pAlarmLog = new LogWriter<std::stringstream>;
    m_pDebugLog = new LogWriter<TADebugRecord>;
}

CorbaLogMgr::~CorbaLogMgr() {
    delete m_pSysLog;
    delete m_pOperLog;
    delete m_pNotifyLog;
    delete m_pAlarmLog;
    delete m_pDebugLog;
}

CorbaLogMgr* CorbaLogMgr::Instance() {
    return CreateOnce(m_pInstance, [] { return new CorbaLogMgr; });
}

void CorbaLogMgr::Destroy() {
    if (!LoadInstance(m_pInstance)) {
        return;
    }
    const SingletonGuard guard(*ACE_Static_Object_Lock::instance());
    if (guard.locked()) {
        delete TakeInstance(m_pInstance);
    }
}

bool CorbaLogMgr::GetLogCfg() {
    try {
        ReadSwitch("bLogOperation", m_bLogOperation);
        ReadSwitch("bLogNotify", m_bLogNotify);
        ReadSwitch("bLogAlaram", m_bLogAlarm);
        return true;
    } catch (InterfaceNotExistException&) {
        SetPos(kSourceFile, kLogCfgFailedLine);
        TADebug(2, "CorbaLogMgr::GetLogCfg Failed!");
        return false;
    }
}

bool CorbaLogMgr::Init() {
    if (m_bInited) {
        return true;
    }
    if (!OpenChannel(*m_pDebugLog, "corbadebug") || !GetLogCfg() || !OpenChannel(*m_pSysLog, "corbasys")) {
        return false;
    }
    if (!OpenOptionalChannels()) {
        return false;
    }
    InitIfNameToParamPos();
    return true;
}

bool CorbaLogMgr::OpenOptionalChannels() {
    bool allOpen = true;
    if (m_bLogOperation && !OpenChannel(*m_pOperLog, "corbaoper")) {
        allOpen = false;
    }
    if (m_bLogNotify && !OpenChannel(*m_pNotifyLog, "corbanotify")) {
        allOpen = false;
    }
    if (m_bLogAlarm && !OpenChannel(*m_pAlarmLog, "corba_alarm")) {
        allOpen = false;
    }
    return allOpen;
}

}  // namespace NS_CORBA
