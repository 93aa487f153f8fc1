#include <memory>

#include "logging/logmgr.h"
#include "logging/message_type.h"
#include "logging/operation_audit.h"
#include "logging/request_value_source.h"
#include "orb/request_values.h"

// The short way to a record's values: as the ORB marshals them, without an Any each. Where it doesn't lead to
// the end, the way through the Anys is taken, which says why.

namespace NS_CORBA {

namespace {

constexpr int kSucceeded = 0;

std::unique_ptr<qv_orb::RequestValues> ValuesOf(PortableInterceptor::ServerRequestInfo* info) {
    try {
        return qv_orb::RequestValues::Of(info);
    } catch (const CORBA::Exception&) {
        return nullptr;
    }
}

}  // namespace

/// @return false when nothing was appended
bool CorbaLogMgr::AppendMarshalledValues(PortableInterceptor::ServerRequestInfo* info,
                                         const TALogRecord& record, std::string& text, int& result) {
    const std::unique_ptr<qv_orb::RequestValues> values = ValuesOf(info);
    if (!values) {
        return false;
    }
    const std::size_t begin = text.size();
    const std::vector<int>& secrets = SecretsOf(record.operationName, values->parameters());
    const auto print = [this](CORBA::TypeCode_ptr type, CdrReader& reader, std::string& out,
                              bool& printedNul) { return AppendNext(type, reader, out, printedNul); };
    std::unique_ptr<RequestValueSource> source;
    try {
        source = std::make_unique<RequestValueSource>(*values, print, secrets);
        result = AppendParameters(*source, text, record.messageType);
    } catch (const CORBA::NO_IMPLEMENT&) {
        text.resize(begin);
        return false;
    } catch (...) {
        text.resize(begin);  // not masked yet
        throw;
    }
    MaskPrintedSecrets(record.operationName, text, begin);
    if (record.messageType != kReplyMessage) {
        return true;
    }
    const std::size_t resultBegin = text.size();
    if (source->HasResult()) {
        result = AppendResultText(record, text, [&source](std::string& out, bool& printedNul) {
            return source->AppendResult(out, printedNul);
        });
    } else {
        result = 0;
        text += ParseReplyState(info->reply_status());
    }
    AuditEnd(record, kSucceeded, text, resultBegin);
    return true;
}

}  // namespace NS_CORBA
