#pragma once

#include <ace/TSS_T.h>
#include <tao/DynamicAny/DynamicAny.h>
#include <tao/ORB.h>
#include <tao/PI_Server/PI_Server.h>

#include <cstdarg>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "logging/pos_for_dbg.h"
#include "platform/export.h"

namespace CosNotification {
struct StructuredEvent;
}

namespace NS_CORBA {

class CdrReader;
class ParameterSource;
class PreparedRecord;
template <class Record>
class LogWriter;
struct TADebugRecord;
struct TALogRecord;
struct TANotifyRecord;

/// The singleton behind the free log functions: the five log channels, their switches and the threads'
/// positions.
///
/// The agent bundle calls Init() before other threads log, and Destroy() last of all; not at all after
/// AgentServer::Run with the thread pool on, whose threads log for the rest of the process. Without Init()
/// every write is a silent no-op. Nothing but Instance() and Destroy() takes a lock: channels, switches and
/// table are fixed after Init(), the position is each thread's own, and the platform's log handles accept
/// concurrent calls.
class QV_API CorbaLogMgr : public ACE_TSS<PosForDbg> {
  public:
    /// All channels closed, all switches off. Takes a reference to the agent's ORB, which may be null.
    CorbaLogMgr();
    /// The log handles stay the log service's.
    ~CorbaLogMgr() override;

    /// The one object, made on first use. Null only when the creation lock can't be taken.
    static CorbaLogMgr* Instance();
    /// Destroys the object; the next Instance() makes a new one. No other thread may be logging.
    static void Destroy();

    /// Reads the switches and opens the channels. A second call does everything again.
    /// @return true when every channel that was asked for is open. After false, what was opened works, but
    ///     the table of secret parameters may be empty, and none of them is masked then: whoever goes on with
    ///     operations logged calls InitIfNameToParamPos().
    bool Init();

    /// Reads the three switches; a key that is absent leaves its switch as it was.
    /// @return false when the configuration is not there, which the debug channel tells
    bool GetLogCfg();

    /// Fills the table of the operations whose parameters are kept out of the logs.
    void InitIfNameToParamPos();

    /// Writes to the system channel. More than 4,095 characters come out as an empty record.
    void TATrace(const char* format, std::va_list& args);
    /// Writes `text` as it stands to the debug channel.
    void TADebug(int level, const char* text);
    /// Writes to the debug channel. More than 4,095 characters come out as an empty record.
    void TADebug(int level, const char* format, std::va_list& args);

    /// Writes the record of a request (0), a reply (1) or an exception (2) when operations are logged.
    void WriteOperRecord(PortableInterceptor::ServerRequestInfo* info, unsigned char messageType);
    /// Fills `record` from `info`. @return 0 when the record is whole
    int GetOperLogRecord(PortableInterceptor::ServerRequestInfo* info, unsigned char messageType,
                         TALogRecord& record);

    // Parts of a record: public for agents that build texts of their own, thread-safe after Init().

    /// Prints the parameters that a message of that type shows. A text ends at its first NUL.
    /// @param params null counts as an empty list
    /// @return 0, or what ParseAnyData returned for the parameter that could not be printed; `text` then ends
    ///         with that parameter
    int ParseParaInfo(const Dynamic::ParameterList* params, std::string& text, unsigned char messageType);
    /// Prints a value of any type. What a DynAny of it holds is printed, wherever its current position is.
    /// @return 0, or -1 with the reason in the debug channel
    int ParseAnyData(DynamicAny::DynAny* value, std::ostringstream& out);
    /// Prints an exception as the list that a record shows.
    /// @return 0; otherwise `text` stays as it was or tells that the exception could not be printed
    int ParseExceptionInfo(const CORBA::Any& exception, unsigned char replyStatus, std::string& text);
    /// The line of a record that tells how a request ended.
    std::string ParseReplyState(short status);
    /// Kept in the interface; always 0.
    int ParseObjRef();
    /// Replaces the secret parameters of `operation` in the list. Raises CORBA::BAD_PARAM when the list is
    /// shorter than the table of secrets expects.
    void SecurityHandle(Dynamic::ParameterList_var& params, const std::string& operation);
    /// Appends `in` to `out` with the passwords masked that a printed "logOutSession" shows; for every other
    /// operation `out` becomes `in`.
    void LogOutSessionParamterAnonyms(std::string& out, const std::string& in, const std::string& operation);

    /// Writes the record of an event to the notification channel when notifications are logged. Costs a
    /// comparison otherwise.
    void WriteNotifyLog(const CosNotification::StructuredEvent& event);
    /// Fills `record` from `event`. @return 0 when the record is whole
    int GetNotifyLogRecord(const CosNotification::StructuredEvent& event, TANotifyRecord& record);
    /// Prints the filterable fields of an event. @return the text, and 0 or what ParseAnyData returned
    std::pair<std::string, int> GetInfoFromEvent(const CosNotification::StructuredEvent& event);
    /// Prints `value` and a line end to the debug channel, or as much of it as can be printed.
    void WriteTmfLog(int level, const CORBA::Any& value);
    /// Writes to the notification channel when notifications are logged.
    void WriteAlarmNotifyLog(const std::stringstream& text);
    /// Writes to the alarm channel when alarms are logged.
    void WriteAlarmLog(const std::stringstream& text);

    static CorbaLogMgr* m_pInstance;  ///< what Instance() has made; null before

  protected:
    CORBA::ORB_var m_ORB;                                 ///< the agent's; nil when it had none
    LogWriter<TALogRecord>* m_pOperLog = nullptr;         ///< channel "corbaoper"
    LogWriter<TANotifyRecord>* m_pNotifyLog = nullptr;    ///< channel "corbanotify"
    LogWriter<std::stringstream>* m_pAlarmLog = nullptr;  ///< channel "corba_alarm"
    LogWriter<TADebugRecord>* m_pDebugLog = nullptr;      ///< channel "corbadebug"
    LogWriter<std::string>* m_pSysLog = nullptr;          ///< channel "corbasys"
    bool m_bLogOperation = false;                         ///< setting bLogOperation
    bool m_bLogNotify = false;                            ///< setting bLogNotify
    bool m_bLogAlarm = false;                             ///< setting bLogAlaram
    bool m_bInited = false;                               ///< nothing sets it
    /// Operation name to the positions, from 0, of its secret parameters.
    std::map<std::string, std::vector<int>> m_IfNameToParamPos;

  private:
    friend class PreparedRecord;

    bool OpenOptionalChannels();
    void WriteDebugRecord(int level, const char* text);
    bool HasOrb() const;
    void WriteRequest(const TALogRecord& record, std::string& text, std::size_t body);
    void WriteRecordText(int result, std::string& text);
    int TakeHead(PortableInterceptor::ServerRequestInfo* info, unsigned char messageType, TALogRecord& record,
                 std::string& text);
    int AppendBody(PortableInterceptor::ServerRequestInfo* info, const TALogRecord& record,
                   std::string& text);
    int AppendBodyOfType(PortableInterceptor::ServerRequestInfo* info, const TALogRecord& record,
                         std::string& text);
    int AppendValues(PortableInterceptor::ServerRequestInfo* info, const TALogRecord& record,
                     std::string& text);
    bool AppendMarshalledValues(PortableInterceptor::ServerRequestInfo* info, const TALogRecord& record,
                                std::string& text, int& result);
    int AppendArguments(PortableInterceptor::ServerRequestInfo* info, const TALogRecord& record,
                        std::string& text);
    int AppendResult(PortableInterceptor::ServerRequestInfo* info, const TALogRecord& record,
                     std::string& text);
    int AppendResultText(const TALogRecord& record, std::string& text,
                         const std::function<int(std::string&, bool& printedNul)>& append);
    int AppendException(PortableInterceptor::ServerRequestInfo* info, const TALogRecord& record,
                        std::string& text);
    int AppendParameters(ParameterSource& source, std::string& text, unsigned char messageType);
    int AppendAny(const CORBA::Any& value, std::string& text, bool& printedNul);
    int PrintWhole(const CORBA::Any& value, std::string& text);
    int AppendNext(CORBA::TypeCode_ptr type, CdrReader& reader, std::string& text, bool& printedNul);
    const std::vector<int>& SecretsOf(const std::string& operation, std::size_t parameters) const;
    bool MaskPrintedSecrets(const std::string& operation, std::string& text, std::size_t begin);
};

}  // namespace NS_CORBA
