// Loaded into the agent, this leaves it without a security service, or with one that raises what it was
// asked: the environment variable QV_TEST_SECURITY is "missing" or "raising".
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

#include "platform/security_service.h"
#include "standalone/registry.h"

namespace {

class RaisingSecurity final : public NS_SECURITY_SERVICE1::SecurityIF {
  public:
    unsigned long UserLogin(const std::string& user, const std::string& password, const std::string&,
                            const std::string&, const std::string&) override {
        throw std::runtime_error("no login of " + user + " with " + password);
    }
    int UserLogout(const std::string&, const std::string& user) override { throw std::runtime_error(user); }
    unsigned long CheckUserLogin(const std::string&, const std::string& password,
                                 const std::string&) override {
        throw std::runtime_error("no check of " + password);
    }
    void EncryptPassword(const std::string& plain, std::string&) override { throw std::runtime_error(plain); }
    int GetOperRiskLevel(const std::string& operation) override { throw std::runtime_error(operation); }
};

const bool replaced = [] {
    const char* const wanted = std::getenv("QV_TEST_SECURITY");
    const std::string kind = wanted == nullptr ? "" : wanted;
    std::shared_ptr<NS_BUNDLEMGR1::ServiceObjectBase> object;
    if (kind == "raising") {
        static RaisingSecurity security;
        object = qv_standalone::MakeServiceObject(security);
    }
    qv_standalone::ReplaceServiceObject(qv_standalone::kPlatformBundle, qv_standalone::kSecurityService,
                                        object);
    return true;
}();

}  // namespace
