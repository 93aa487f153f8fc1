#include "logging/prepared_record.h"

#include <memory>

#include "logging/corba_talcom_log.h"
#include "logging/corbalogutil.h"
#include "logging/logmgr.h"
#include "logging/message_type.h"
#include "logging/printed_parameters.h"
#include "logging/record_stamp.h"
#include "logging/remote_address.h"
#include "logging/request_value_source.h"
#include "logging/text_end.h"
#include "logging/thread_address_map.h"
#include "logging/value_plan_cache.h"
#include "logging/value_printer.h"
#include "orb/request_values.h"

namespace NS_CORBA {

namespace {

constexpr std::size_t kUsualRecord = 1024;        // most are made without moving them
constexpr std::size_t kTooMuchToKeep = 16 << 10;  // while the servant works

}  // namespace

PreparedRecord::PreparedRecord(PortableInterceptor::ServerRequestInfo* info, const char* operation) noexcept
    : m_info(info) {
    CorbaLogMgr* const manager = CorbaLogMgr::Instance();
    if (!manager || !info || !operation) {
        return;
    }
    try {
        m_whole = manager->m_bLogOperation && Prepare(*manager, operation);
    } catch (...) {
        m_whole = false;  // met again, and told, when the record is made in the usual way
    }
}

bool PreparedRecord::Prepare(CorbaLogMgr& manager, const char* operation) {
    const std::unique_ptr<qv_orb::RequestValues> values = qv_orb::RequestValues::Of(m_info);
    if (!values) {
        return false;
    }
    m_record.threadId = RecordThreadId();
    m_record.messageType = kRequestMessage;
    m_record.operationName = operation;
    m_record.requestId = m_info->request_id();
    m_knowsAddress = CallerAddress(m_info, m_record.remoteAddress);
    m_text.reserve(kUsualRecord);
    AppendRecordHead(m_text, m_record);
    m_body = m_text.size();
    CutAtNul(m_text);
    if (m_text.size() != m_body) {
        return false;  // the record ends within its head
    }
    return AppendValues(manager, *values);
}

bool PreparedRecord::AppendValues(CorbaLogMgr& manager, qv_orb::RequestValues& values) {
    bool cut = false;  // a NUL ends the text
    const auto print = [&manager, &cut](CORBA::TypeCode_ptr type, CdrReader& reader, std::string& out,
                                        bool& printedNul) {
        ValuePrinter printer(out, [&manager] { return manager.HasOrb(); });
        printer.Print(*PlanOf(type), reader);
        printedNul = printedNul || printer.printedNul();
        cut = printedNul;
        return 0;
    };
    m_printed = std::make_shared<PrintedParameters>();
    RequestValueSource source(values, print, manager.SecretsOf(m_record.operationName, values.parameters()));
    source.NotePieces(*m_printed);
    const bool printed = manager.AppendParameters(source, m_text, kRequestMessage) == 0;
    const bool masked = manager.MaskPrintedSecrets(m_record.operationName, m_text, m_body);
    if (printed && !cut && !masked && m_text.size() <= kTooMuchToKeep) {
        PrintedParameters::Leave(values, m_printed);
    }
    return printed;
}

void PreparedRecord::Write() {
    CorbaLogMgr* const manager = CorbaLogMgr::Instance();
    if (!m_whole || !manager) {
        TaWriteOperLog(m_info, kRequestMessage);
        return;
    }
    WriteCallChain(m_info, kRequestMessage);
    if (!manager->m_bLogOperation) {
        return;
    }
    if (m_knowsAddress) {
        g_ThreadAddressMap.Set(m_record.threadId, m_record.remoteAddress);
    }
    manager->WriteRequest(m_record, m_text, m_body);
    m_printed->text = std::move(m_text);
}

}  // namespace NS_CORBA
