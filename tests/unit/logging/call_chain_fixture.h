#pragma once

#include <string>
#include <vector>

#include "standalone/thread_setup.h"
#include "tests/unit/logging/fake_call_chain.h"
#include "tests/unit/logging/log_fixture.h"
#include "tests/unit/request/fake_server_request_info.h"

namespace qv_test {

constexpr unsigned char kRequest = 0;
constexpr unsigned char kReply = 1;
constexpr unsigned char kException = 2;

/// A request that tells how it ended and nothing else.
class EndedRequest : public FakeServerRequestInfo {
  public:
    explicit EndedRequest(PortableInterceptor::ReplyStatus status) : m_status(status) {}
    PortableInterceptor::ReplyStatus reply_status() override { return m_status; }

  private:
    const PortableInterceptor::ReplyStatus m_status;
};

/// A test with a call chain library of its own.
class CallChainFixture : public LogFixture {
  protected:
    CallChainFixture() {
        InitLog();
        capture->Clear();
        FakeCallChain::Current() = {};
        g_callChain = {&chain, {}};
        TakeCallChainNames();
        qv_standalone::SetThreadContext("[anna][10.0.0.1]", "getAllEMSAndMESystemAlarms");
    }
    ~CallChainFixture() override {
        g_callChain = {};
        qv_standalone::ClearThreadContext();
    }

    /// The only line of the debug channel, apart from those on the missing caller of a thread without a call.
    void ExpectDebug(int line, const std::string& text) {
        std::vector<LogEntry> own;
        for (const LogEntry& entry : capture->Entries()) {
            if (entry.file != "corbalogutil") {
                own.push_back(entry);
            }
        }
        ASSERT_EQ(own.size(), 1u);
        ExpectEntry(own[0], "corbadebug", 3, "corba_talcom_log", line, text);
    }

    FakeCallChain chain;
    EndedRequest succeeded{PortableInterceptor::SUCCESSFUL};
    EndedRequest failed{PortableInterceptor::SYSTEM_EXCEPTION};
};

}  // namespace qv_test
