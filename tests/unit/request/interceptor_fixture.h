#pragma once

#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "request/agent_request_interceptor.h"
#include "request/request_interceptor_base.h"
#include "tests/support/scoped_env.h"
#include "tests/support/take_turns.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/logging/fake_operation.h"
#include "tests/unit/logging/fake_services.h"
#include "tests/unit/logging/log_fixture.h"

namespace qv_test {

/// Hooks that note their calls and, on demand, do something.
class NotingHooks : public NS_CORBA::RequestInterceptorBase {
  public:
    std::vector<std::string> calls;
    std::function<void()> before;
    std::function<void()> after;

    void BeforeReceiveRequest(PortableInterceptor::ServerRequestInfo*) override {
        TakeTurns();
        calls.push_back("before");
        TakeTurns();
        if (before) {
            before();
        }
    }
    void AfterReceiveRequest(PortableInterceptor::ServerRequestInfo*) override {
        TakeTurns();
        calls.push_back("after");
        TakeTurns();
        if (after) {
            after();
        }
    }
};

/// A test of an interceptor without an ORB, with logs captured and a log directory of its own.
class InterceptorFixture : public LogFixture {
  protected:
    static constexpr const char* kStatisticsFile = "CORBAAgentStatisticInfo.dat";

    InterceptorFixture() { std::filesystem::create_directories(LogPath()); }

    void TearDown() override {
        NS_CORBA::CorbaBaseAgentConfig::Destroy();
        LogFixture::TearDown();
    }

    /// The directory that the platform names for the agent's logs.
    std::string LogPath() const { return dir.File("log"); }
    std::string StatisticsPath() const { return LogPath() + "/" + kStatisticsFile; }
    std::string Statistics() const { return ReadFile(StatisticsPath()); }
    void WriteStatistics(const std::string& contents) const {
        dir.Write(std::string("log/") + kStatisticsFile, contents);
    }

    void EnableStatistics(bool on) {
        config.Set("IsInterceptorEnabled", on ? "1" : "0");
        NS_CORBA::CorbaBaseAgentConfig::Instance()->GetOption();
    }

    TempDir dir;
    ScopedEnv logPath{"QV_LOG_DIR", LogPath()};
    FakeServices services;
    FakeOperation info{"ping"};
};

/// Owns an interceptor that no ORB holds.
class OwnInterceptor {
  public:
    OwnInterceptor() : m_raw(new Server_Request_Interceptor("gate")), m_owner(m_raw) {}
    Server_Request_Interceptor* operator->() { return m_raw; }
    Server_Request_Interceptor& operator*() { return *m_raw; }

  private:
    Server_Request_Interceptor* const m_raw;
    PortableInterceptor::ServerRequestInterceptor_var m_owner;
};

}  // namespace qv_test
