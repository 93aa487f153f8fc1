#include "logging/corbalogutil.h"
#include "logging/log_writer.h"
#include "logging/logmgr.h"
#include "logging/record_stamp.h"
#include "orb/portability.h"

namespace NS_CORBA {

namespace {

constexpr char kSourceFile[] = "logmgr";
constexpr int kNameOrIdFailedLine = 652;
constexpr int kNoInfoLine = 810;
constexpr int kTraceLevel = 3;

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
        record.paramInfo += "ERROR: Exception occurred when parsing message!";
        SetPos(kSourceFile, kNameOrIdFailedLine);
        TaDebugWithPara(
            kTraceLevel,
            "[CorbaLogMgr::GetOperLogRecord] CORBA exception <%s> received when parsing operation name "
            "& request_id!",
            qv_orb::ExceptionText(ex).c_str());
        return -1;
    }
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
    m_pOperLog->Write(record);
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
    return TakeNameAndId(info, record);
}

}  // namespace NS_CORBA
