#include "logging/operation_audit.h"

#include <map>
#include <utility>

#include "logging/service_lookup.h"
#include "platform/audit_log.h"
#include "platform/security_service.h"

namespace NS_CORBA {

namespace {

enum RiskLevel { kNoRisk = 0, kMinorRisk = 1, kRisk = 2 };

int RiskLevelOf(const std::string& operation) {
    return ServiceLookup<NS_SECURITY_SERVICE1::SecurityIF>("SecurityIF").Get().GetOperRiskLevel(operation);
}

AuditLogif& AuditLog() {
    return ServiceLookup<AuditLogif>("AuditLogif").Get();
}

std::map<std::string, std::string> AuditFields(const TALogRecord& record, int riskLevel, std::string info) {
    std::map<std::string, std::string> fields = {{"operName", record.operationName},
                                                 {"nmsAddress", record.remoteAddress},
                                                 {"strInfo", std::move(info)}};
    if (riskLevel == kMinorRisk) {
        fields["riskLevel"] = "MINOR";
    } else if (riskLevel == kRisk) {
        fields["riskLevel"] = "RISK";
    }
    return fields;
}

}  // namespace

void AuditRequest(const TALogRecord& record, const std::string& text, std::size_t begin) {
    const int riskLevel = RiskLevelOf(record.operationName);
    if (riskLevel == kNoRisk) {
        return;
    }
    AuditLog().BeginAudit(record.requestId, AuditFields(record, riskLevel, text.substr(begin)));
}

void AuditEnd(const TALogRecord& record, int result, const std::string& text, std::size_t begin) {
    if (RiskLevelOf(record.operationName) == kNoRisk) {
        return;
    }
    AuditLog().EndAudit(record.requestId, result, text.substr(begin));
}

}  // namespace NS_CORBA
