// A platform that can't name the directory of the logs. This program's own definition takes the place of the
// one in the platform's library when the program is loaded.

#include <stdexcept>

#include "platform/environment.h"
#include "tests/unit/request/interceptor_fixture.h"

std::string NS_BUNDLEMGR1::GetNBILogPath() {
    throw std::runtime_error("no directory");
}

namespace {

class StatisticsPathTest : public qv_test::InterceptorFixture {};

constexpr char kText[] =
    "[Server_Request_Interceptor::receive_request] get unknow excpetion while writing request operation log "
    "!";

TEST_F(StatisticsPathTest, AFailedLoadIsToldAndTheInterceptorServes) {
    EnableStatistics(true);
    ASSERT_TRUE(InitLog({{"bLogOperation", "1"}}));
    qv_test::OwnInterceptor interceptor;
    const auto entries = capture->Entries();
    ASSERT_EQ(entries.size(), 1u);
    qv_test::ExpectEntry(entries[0], "corbadebug", 1, "agent_request_interceptor", 77, kText);

    interceptor->RecordOperCount(&info);
    EXPECT_EQ(capture->Entries("corbaoper").size(), 1u);
    EXPECT_EQ(capture->Entries("corbadebug").size(), 1u);
}

TEST_F(StatisticsPathTest, AFailedLoadDoesNotDependOnTheLog) {
    EnableStatistics(true);
    ASSERT_TRUE(InitLog());
    capture->SetWriteHook([](const qv_test::LogEntry&) { throw std::runtime_error("disk full"); });
    EXPECT_NO_THROW(qv_test::OwnInterceptor());
}

TEST_F(StatisticsPathTest, SwitchedOffThePathIsNotAsked) {
    EnableStatistics(false);
    ASSERT_TRUE(InitLog());
    qv_test::OwnInterceptor interceptor;
    EXPECT_TRUE(capture->Entries().empty());
}

}  // namespace
