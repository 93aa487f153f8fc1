#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/audit_log.h"
#include "platform/security_service.h"
#include "standalone/registry.h"

namespace qv_test {

/// Rates operations, and raises what it is told to.
class FakeSecurity final : public NS_SECURITY_SERVICE1::SecurityIF {
  public:
    std::map<std::string, int> levels;  ///< 0 for an operation that isn't here
    std::function<void()> hook;         ///< called ahead of each rating; may raise
    std::vector<std::string> asked;

    unsigned long UserLogin(const std::string&, const std::string&, const std::string&, const std::string&,
                            const std::string&) override {
        return 0;
    }
    int UserLogout(const std::string&, const std::string&) override { return 0; }
    unsigned long CheckUserLogin(const std::string&, const std::string&, const std::string&) override {
        return 0;
    }
    void EncryptPassword(const std::string&, std::string&) override {}
    int GetOperRiskLevel(const std::string& operation) override {
        asked.push_back(operation);
        if (hook) {
            hook();
        }
        const auto level = levels.find(operation);
        return level == levels.end() ? 0 : level->second;
    }
};

/// Keeps what it is told.
class FakeAudit final : public NS_CORBA::AuditLogif {
  public:
    struct Begun {
        unsigned long requestId;
        std::map<std::string, std::string> fields;
    };
    struct Ended {
        unsigned long requestId;
        int result;
        std::string detail;
    };
    std::vector<Begun> begun;
    std::vector<Ended> ended;

    void BeginAudit(const unsigned long& requestId,
                    const std::map<std::string, std::string>& fields) override {
        begun.push_back({requestId, fields});
    }
    void EndAudit(const unsigned long& requestId, const int& result, const std::string& detail) override {
        ended.push_back({requestId, result, detail});
    }
};

/// While it lives both services stand in the place of the platform's. A service can be taken away.
class FakeServices {
  public:
    FakeServices() {
        m_formerSecurity = Put("SecurityIF", qv_standalone::MakeServiceObject(security));
        m_formerAudit = Put("AuditLogif", qv_standalone::MakeServiceObject(audit));
    }
    ~FakeServices() {
        Put("SecurityIF", m_formerSecurity);
        Put("AuditLogif", m_formerAudit);
    }
    FakeServices(const FakeServices&) = delete;
    FakeServices& operator=(const FakeServices&) = delete;

    void RemoveSecurity() { Put("SecurityIF", nullptr); }
    void RemoveAudit() { Put("AuditLogif", nullptr); }

    FakeSecurity security;
    FakeAudit audit;

  private:
    using Object = std::shared_ptr<NS_BUNDLEMGR1::ServiceObjectBase>;

    static Object Put(const std::string& name, const Object& object) {
        return qv_standalone::ReplaceServiceObject(qv_standalone::kPlatformBundle, name, object);
    }

    Object m_formerSecurity;
    Object m_formerAudit;
};

}  // namespace qv_test
