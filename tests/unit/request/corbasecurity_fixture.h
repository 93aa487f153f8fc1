#pragma once

#include <functional>
#include <mutex>

#include "platform/security_service.h"
#include "request/corbasecurity.h"
#include "tests/unit/logging/log_fixture.h"

namespace NS_CORBA {

/// Shows the values that nothing reads.
class CorbaSecurityMgrProbe {
  public:
    static long Id(CorbaClientID& id) { return id.m_id.value(); }
    static long Interval() { return CorbaSecurityMgr::m_pInstance->m_interval; }
    static bool Exit() { return CorbaSecurityMgr::m_pInstance->m_bExit; }
    static long ClientId() { return CorbaSecurityMgr::m_pInstance->m_clientId.m_id.value(); }
    static bool HasClients() { return !CorbaSecurityMgr::m_pInstance->m_clientList.empty(); }
};

}  // namespace NS_CORBA

namespace qv_test {

using NS_CORBA::CorbaSecurityMgr;
using Calls = std::vector<std::string>;

inline constexpr char kService[] = "SecurityIF";
inline constexpr char kPassword[] = "s3cret-Pa55";

/// Notes its calls, answers what it is told and runs a hook in each.
class FakeSecurity final : public NS_SECURITY_SERVICE1::SecurityIF {
  public:
    unsigned long code = 0;
    int logoutCode = 0;
    std::function<void(const std::string& user)> hook;

    unsigned long UserLogin(const std::string& user, const std::string& password,
                            const std::string& clientType, const std::string& nmsAddress,
                            const std::string& reserved) override {
        Note("login " + user + "," + password + "," + clientType + "," + nmsAddress + "," + reserved, user);
        return code;
    }
    int UserLogout(const std::string& nmsAddress, const std::string& user) override {
        Note("logout " + nmsAddress + "," + user, user);
        return logoutCode;
    }
    unsigned long CheckUserLogin(const std::string& user, const std::string& password,
                                 const std::string& nmsAddress) override {
        Note("check " + user + "," + password + "," + nmsAddress, user);
        return code;
    }
    void EncryptPassword(const std::string& plainText, std::string& cipherText) override {
        Note("encrypt " + plainText, "");
        cipherText = "cipher";
    }
    int GetOperRiskLevel(const std::string&) override { return 0; }

    Calls Seen() {
        const std::lock_guard<std::mutex> lock(m_lock);
        return m_calls;
    }

  private:
    void Note(const std::string& call, const std::string& user) {
        {
            const std::lock_guard<std::mutex> lock(m_lock);
            m_calls.push_back(call);
        }
        if (hook) {
            hook(user);
        }
    }

    std::mutex m_lock;
    Calls m_calls;
};

class CorbaSecurityTest : public LogFixture {
  protected:
    CorbaSecurityTest() {
        m_former = Put(qv_standalone::MakeServiceObject(security));
        InitLog();
    }
    ~CorbaSecurityTest() override { Put(m_former); }

    void TearDown() override {
        CorbaSecurityMgr::Destroy();  // ahead of the log, in which its thread writes
        LogFixture::TearDown();
    }

    static CorbaSecurityMgr& Security() { return *CorbaSecurityMgr::Instance(); }

    static std::shared_ptr<NS_BUNDLEMGR1::ServiceObjectBase> Put(
        const std::shared_ptr<NS_BUNDLEMGR1::ServiceObjectBase>& object) {
        return qv_standalone::ReplaceServiceObject(qv_standalone::kPlatformBundle, kService, object);
    }
    static void RemoveService() { Put(nullptr); }

    /// Expects exactly one record in all logs: this line of the system channel.
    void ExpectTrace(int line, const std::string& text) {
        const auto entries = capture->Entries();
        ASSERT_EQ(entries.size(), 1u);
        ExpectEntry(entries[0], "corbasys", -1, "corbasecurity", line, text);
    }

    void ExpectNoSecretLogged() {
        for (const LogEntry& entry : capture->Entries()) {
            EXPECT_EQ(entry.text.find(kPassword), std::string::npos) << entry.text;
        }
    }

    FakeSecurity security;

  private:
    std::shared_ptr<NS_BUNDLEMGR1::ServiceObjectBase> m_former;
};

}  // namespace qv_test
