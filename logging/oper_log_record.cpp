#include "logging/corba_talcom_log.h"
#include "logging/corbalogutil.h"
#include "logging/log_writer.h"
#include "logging/logmgr.h"
#include "logging/message_type.h"
#include "logging/operation_audit.h"
#include "logging/record_stamp.h"
#include "logging/remote_address.h"
#include "logging/text_end.h"
#include "orb/portability.h"
#include "orb/value_access.h"

namespace NS_CORBA {

namespace {

constexpr char kSourceFile[] = "logmgr";
constexpr int kCorbaExceptionLine = 553;
constexpr int kOtherExceptionLine = 561;
constexpr int kNameOrIdFailedLine = 652;
constexpr int kArgumentsCorbaLine = 668;
constexpr int kArgumentsOtherLine = 674;
constexpr int kNoInfoLine = 810;
constexpr int kTraceLevel = 3;
constexpr char kNotParsed[] = "ERROR: Exception occurred when parsing message!";

constexpr int kNoLevel = -1;
constexpr std::size_t kUsualRecord = 1024;  // most are made without moving them
constexpr int kSucceeded = 0;
constexpr int kFailed = 1;

/// Takes name and id of the request. @return 0, or -1 when the ORB doesn't tell them
int TakeNameAndId(PortableInterceptor::ServerRequestInfo* info, TALogRecord& record, std::string& text) {
    record.operationName = "UNKNOWN";
    try {
        const CORBA::String_var operation = info->operation();
        if (operation.in()) {
            record.operationName = operation.in();
        }
        record.requestId = info->request_id();
        return 0;
    } catch (const CORBA::Exception& ex) {
        text += kNotParsed;
        SetPos(kSourceFile, kNameOrIdFailedLine);
        TaDebugWithPara(
            kTraceLevel,
            "[CorbaLogMgr::GetOperLogRecord] CORBA exception <%s> received when parsing operation name "
            "& request_id!",
            qv_orb::ExceptionText(ex).c_str());
        return -1;
    }
}

/// Runs `step`, and turns what it raises into a result, a line in the log and a mark in `text`.
template <class Step>
int Guarded(std::string& text, Step step) {
    try {
        return step();
    } catch (const CORBA::Exception& ex) {
        SetPos(kSourceFile, kCorbaExceptionLine);
        TaDebugWithPara(kTraceLevel,
                        "[CorbaLogMgr::GetOperLogRecord] CORBA exception <%s> received when parsing message!",
                        qv_orb::ExceptionText(ex).c_str());
    } catch (...) {
        SetPos(kSourceFile, kOtherExceptionLine);
        TaDebug(kTraceLevel,
                "[CorbaLogMgr::GetOperLogRecord] CORBA exception received when parsing message!");
    }
    text += "---";
    text += kNotParsed;
    return -1;
}

CORBA::TCKind KindOf(const CORBA::Any* value) {
    if (!value || CORBA::is_nil(qv_orb::TypeOf(*value))) {
        return CORBA::tk_null;
    }
    return qv_orb::TypeOf(*value)->kind();
}

/// The request's parameters; an empty list when the ORB doesn't tell them.
Dynamic::ParameterList* TakeArguments(PortableInterceptor::ServerRequestInfo* info) {
    try {
        if (Dynamic::ParameterList* const arguments = info->arguments()) {
            return arguments;
        }
    } catch (const CORBA::Exception& ex) {
        SetPos(kSourceFile, kArgumentsCorbaLine);
        TaDebugWithPara(kTraceLevel,
                        "[CorbaLogMgr::GetOperLogRecord] CORBA exception <%s> received when parsing "
                        "operation parameter list!",
                        qv_orb::ExceptionText(ex).c_str());
    } catch (...) {
        SetPos(kSourceFile, kArgumentsOtherLine);
        TaDebug(kTraceLevel,
                "[CorbaLogMgr::GetOperLogRecord] Unknown exception received when parsing operation "
                "parameter list!");
    }
    return new Dynamic::ParameterList;
}

}  // namespace

void CorbaLogMgr::WriteOperRecord(PortableInterceptor::ServerRequestInfo* info, unsigned char messageType) {
    WriteCallChain(info, messageType);
    if (!m_bLogOperation) {
        return;
    }
    TALogRecord record;
    std::string body;
    int result = TakeHead(info, messageType, record, body);
    // The body follows in the same string: it may be too large to be moved for the head's sake.
    std::string text;
    text.reserve(kUsualRecord + body.size());
    AppendRecordHead(text, record);
    const std::size_t whole = text.size();
    CutAtNul(text);
    const std::size_t head = text.size();
    text += body;
    if (result == 0) {
        result = AppendBody(info, record, text);
    }
    if (head != whole) {  // a NUL in the head ends the record, though not the audit
        text.resize(head);
        result = 0;
    }
    WriteRecordText(result, text);
}

/// Writes the record of a request whose whole text is there, with the body from `body` on.
void CorbaLogMgr::WriteRequest(const TALogRecord& record, std::string& text, std::size_t body) {
    const int result = Guarded(text, [&] {
        AuditRequest(record, text, body);
        return 0;
    });
    WriteRecordText(result, text);
}

void CorbaLogMgr::WriteRecordText(int result, std::string& text) {
    if (result != 0) {
        text += "...this record is not full!";
    }
    m_pOperLog->WriteWhole(kNoLevel, text);
}

int CorbaLogMgr::GetOperLogRecord(PortableInterceptor::ServerRequestInfo* info, unsigned char messageType,
                                  TALogRecord& record) {
    if (info) {
        record = TALogRecord();
    }
    const int result = TakeHead(info, messageType, record, record.paramInfo);
    return result == 0 ? AppendBody(info, record, record.paramInfo) : result;
}

/// Fills everything but the body; what has to be said of a failure goes to `text`. @return 0 when the body
/// can follow
int CorbaLogMgr::TakeHead(PortableInterceptor::ServerRequestInfo* info, unsigned char messageType,
                          TALogRecord& record, std::string& text) {
    if (!info) {
        SetPos(kSourceFile, kNoInfoLine);
        TaDebug(kTraceLevel, "[CorbaLogMgr::GetOperLogRecord] operation parameter is nullptr!");
        return -1;
    }
    record.threadId = RecordThreadId();
    record.time = RecordTime();
    record.messageType = messageType;
    return Guarded(text, [&] {
        record.remoteAddress = RemoteAddress(info, messageType, record.threadId);
        return TakeNameAndId(info, record, text);
    });
}

int CorbaLogMgr::AppendBody(PortableInterceptor::ServerRequestInfo* info, const TALogRecord& record,
                            std::string& text) {
    return Guarded(text, [&] { return AppendBodyOfType(info, record, text); });
}

int CorbaLogMgr::AppendBodyOfType(PortableInterceptor::ServerRequestInfo* info, const TALogRecord& record,
                                  std::string& text) {
    const std::size_t begin = text.size();
    switch (record.messageType) {
        case kRequestMessage: {
            const int result = AppendValues(info, record, text);
            AuditRequest(record, text, begin);
            return result;
        }
        case kReplyMessage:
            return AppendValues(info, record, text);
        case kExceptionMessage:
            return AppendException(info, record, text);
        default:
            text += "Other message type...not printed!";
            AuditEnd(record, kFailed, text, begin);
            return 0;
    }
}

/// The parameters and, for a reply, the result.
int CorbaLogMgr::AppendValues(PortableInterceptor::ServerRequestInfo* info, const TALogRecord& record,
                              std::string& text) {
    int result = 0;
    if (AppendMarshalledValues(info, record, text, result)) {
        return result;
    }
    result = AppendArguments(info, record, text);
    return record.messageType == kReplyMessage ? AppendResult(info, record, text) : result;
}

int CorbaLogMgr::AppendArguments(PortableInterceptor::ServerRequestInfo* info, const TALogRecord& record,
                                 std::string& text) {
    const std::size_t begin = text.size();
    Dynamic::ParameterList_var arguments = TakeArguments(info);
    SecurityHandle(arguments, record.operationName);
    std::string block;
    const int result = ParseParaInfo(arguments.operator->(), block, record.messageType);
    text += block;
    MaskPrintedSecrets(record.operationName, text, begin);
    return result;
}

int CorbaLogMgr::AppendResult(PortableInterceptor::ServerRequestInfo* info, const TALogRecord& record,
                              std::string& text) {
    const std::size_t begin = text.size();
    const CORBA::Any_var value = info->result();
    const CORBA::TCKind kind = KindOf(value.operator->());
    int result = 0;
    if (kind == CORBA::tk_null || kind == CORBA::tk_void) {
        text += ParseReplyState(info->reply_status());
    } else {
        result = AppendResultText(record, text, [&](std::string& out, bool& printedNul) {
            return AppendAny(value.in(), out, printedNul);
        });
    }
    AuditEnd(record, kSucceeded, text, begin);
    return result;
}

int CorbaLogMgr::AppendResultText(const TALogRecord& record, std::string& text,
                                  const std::function<int(std::string&, bool&)>& append) {
    const std::size_t begin = text.size();
    bool printedNul = false;
    text += record.operationName;
    text += " @return: ";
    const int result = append(text, printedNul);
    text += '\n';
    if (printedNul) {
        CutAtNul(text, begin);
    }
    return result;
}

int CorbaLogMgr::AppendException(PortableInterceptor::ServerRequestInfo* info, const TALogRecord& record,
                                 std::string& text) {
    const std::size_t begin = text.size();
    const CORBA::Any_var exception = info->sending_exception();
    const PortableInterceptor::ReplyStatus status = info->reply_status();
    int result = -1;
    if (status == PortableInterceptor::SYSTEM_EXCEPTION || status == PortableInterceptor::USER_EXCEPTION) {
        std::string list;
        result = ParseExceptionInfo(exception.in(), static_cast<unsigned char>(status), list);
        text += list;
    }
    AuditEnd(record, kFailed, text, begin);
    return result;
}

}  // namespace NS_CORBA
