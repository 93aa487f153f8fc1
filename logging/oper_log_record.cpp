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

constexpr int kSucceeded = 0;
constexpr int kFailed = 1;

/// Takes name and id of the request. @return 0, or -1 when the ORB doesn't tell them
int TakeNameAndId(PortableInterceptor::ServerRequestInfo* info, TALogRecord& record) {
    record.operationName = "UNKNOWN";
    try {
        const CORBA::String_var operation = info->operation();
        if (operation.in()) {
            record.operationName = operation.in();
        }
        record.requestId = info->request_id();
        return 0;
    } catch (const CORBA::Exception& ex) {
        record.paramInfo += kNotParsed;
        SetPos(kSourceFile, kNameOrIdFailedLine);
        TaDebugWithPara(
            kTraceLevel,
            "[CorbaLogMgr::GetOperLogRecord] CORBA exception <%s> received when parsing operation name "
            "& request_id!",
            qv_orb::ExceptionText(ex).c_str());
        return -1;
    }
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
    if (!m_bLogOperation) {
        return;
    }
    TALogRecord record;
    if (GetOperLogRecord(info, messageType, record) != 0) {
        record.paramInfo += "...this record is not full!";
    }
    m_pOperLog->Write(std::move(record));
}

int CorbaLogMgr::GetOperLogRecord(PortableInterceptor::ServerRequestInfo* info, unsigned char messageType,
                                  TALogRecord& record) {
    if (!info) {
        SetPos(kSourceFile, kNoInfoLine);
        TaDebug(kTraceLevel, "[CorbaLogMgr::GetOperLogRecord] operation parameter is nullptr!");
        return -1;
    }
    record.threadId = RecordThreadId();
    record.time = RecordTime();
    record.messageType = messageType;
    try {
        record.remoteAddress = RemoteAddress(info, messageType, record.threadId);
        if (TakeNameAndId(info, record) != 0) {
            return -1;
        }
        return TakeBody(info, record);
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
    record.paramInfo += "---";
    record.paramInfo += kNotParsed;
    return -1;
}

int CorbaLogMgr::TakeBody(PortableInterceptor::ServerRequestInfo* info, TALogRecord& record) {
    switch (record.messageType) {
        case kRequestMessage: {
            const int result = TakeParameters(info, record);
            AuditRequest(record);
            return result;
        }
        case kReplyMessage:
            TakeParameters(info, record);
            return TakeResult(info, record);
        case kExceptionMessage:
            return TakeException(info, record);
        default:
            record.paramInfo = "Other message type...not printed!";
            AuditEnd(record, kFailed, 0);
            return 0;
    }
}

int CorbaLogMgr::TakeParameters(PortableInterceptor::ServerRequestInfo* info, TALogRecord& record) {
    Dynamic::ParameterList_var arguments = TakeArguments(info);
    SecurityHandle(arguments, record.operationName);
    const int result = ParseParaInfo(arguments.operator->(), record.paramInfo, record.messageType);
    MaskPrintedSecrets(record);
    return result;
}

int CorbaLogMgr::TakeResult(PortableInterceptor::ServerRequestInfo* info, TALogRecord& record) {
    const std::size_t begin = record.paramInfo.size();
    const CORBA::Any_var value = info->result();
    const CORBA::TCKind kind = KindOf(value.operator->());
    int result = 0;
    if (kind == CORBA::tk_null || kind == CORBA::tk_void) {
        record.paramInfo += ParseReplyState(info->reply_status());
    } else {
        record.paramInfo += record.operationName;
        record.paramInfo += " @return: ";
        result = AppendAny(value.in(), record.paramInfo);
        record.paramInfo += '\n';
        record.paramInfo = UpToNul(std::move(record.paramInfo));
    }
    AuditEnd(record, kSucceeded, begin);
    return result;
}

int CorbaLogMgr::TakeException(PortableInterceptor::ServerRequestInfo* info, TALogRecord& record) {
    const CORBA::Any_var exception = info->sending_exception();
    const PortableInterceptor::ReplyStatus status = info->reply_status();
    int result = -1;
    if (status == PortableInterceptor::SYSTEM_EXCEPTION || status == PortableInterceptor::USER_EXCEPTION) {
        result = ParseExceptionInfo(exception.in(), static_cast<unsigned char>(status), record.paramInfo);
    }
    AuditEnd(record, kFailed, 0);
    return result;
}

}  // namespace NS_CORBA
