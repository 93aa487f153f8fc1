#include "logging/operation_audit.h"

#include <map>

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

std::map<std::string, std::string> AuditFields(const TALogRecord& record, int riskLevel) {
    std::map<std::string, std::string> fields = {{"operName", record.operationName},
                                                 {"nmsAddress", record.remoteAddress},
                                                 {"strInfo", record.paramInfo}};
    if (riskLevel == kMinorRisk) {
        fields["riskLevel"] = "MINOR";
    } else if (riskLevel == kRisk) {
        fields["riskLevel"] = "RISK";
    }
    return fields;
}

}  // namespace

void AuditRequest(const TALogRecord& record) {
    const int riskLevel = RiskLevelOf(record.operationName);
    if (riskLevel == kNoRisk) {
        return;
    }
    AuditLog().BeginAudit(record.requestId, AuditFields(record, riskLevel));
}

void AuditEnd(const TALogRecord& record, int result, std::size_t detailBegin) {
    if (RiskLevelOf(record.operationName) == kNoRisk) {
        return;
    }
    AuditLog().EndAudit(record.requestId, result, record.paramInfo.substr(detailBegin));
}

}  // namespace NS_CORBA
