#include <pthread.h>

#include <stdexcept>

#include "logging/log_records.h"
#include "orb/portability.h"
#include "tests/unit/logging/log_fixture.h"
#include "tests/unit/request/fake_server_request_info.h"

namespace {

using namespace NS_CORBA;
using qv_test::ExpectEntry;

class OperLogRecordTest : public qv_test::LogFixture {
  protected:
    std::string OnlyRecord() {
        const auto records = capture->Entries("corbaoper");
        EXPECT_EQ(records.size(), 1u);
        return records.empty() ? "" : records[0].text;
    }

    qv_test::FakeServerRequestInfo info;
};

TEST_F(OperLogRecordTest, ARequestReplyOrExceptionIsNamedWithIdAndOperation) {
    ASSERT_TRUE(InitLog({{"bLogOperation", "1"}}));
    info.id = 4294967295u;
    SetPos("source", 12);
    TaWriteOperLog(&info, 0);
    TaWriteOperLog(&info, 1);
    TaWriteOperLog(&info, 2);
    TaWriteOperLog(&info, 3);
    const auto records = capture->Entries();
    ASSERT_EQ(records.size(), 4u);
    const std::string secondLine = "--- Request ID = 4294967295, Operation Name = ping\n";
    ExpectEntry(records[0], "corbaoper", -1, "source", 12,
                "---MessageType:  REQUEST, RemoteAddress:  \n" + secondLine);
    EXPECT_EQ(records[1].text, "---MessageType:  REPLY, RemoteAddress:  \n" + secondLine);
    EXPECT_EQ(records[2].text, "---MessageType:  EXCEPTION, RemoteAddress:  \n" + secondLine);
    EXPECT_EQ(records[3].text, "---MessageType:  OTHER, RemoteAddress:  \n" + secondLine);
}

TEST_F(OperLogRecordTest, WithTheSwitchOffTheRequestIsNotEvenAsked) {
    ASSERT_TRUE(InitLog());
    TaWriteOperLog(&info, 0);
    TaWriteOperLog(nullptr, 0);
    EXPECT_TRUE(capture->Entries().empty());
    EXPECT_EQ(info.operationCalls, 0);
}

TEST_F(OperLogRecordTest, AnOperationWithoutANameIsUnknown) {
    ASSERT_TRUE(InitLog({{"bLogOperation", "1"}}));
    info.operationName = nullptr;
    TaWriteOperLog(&info, 0);
    EXPECT_EQ(OnlyRecord(),
              "---MessageType:  REQUEST, RemoteAddress:  \n--- Request ID = 17, Operation Name = UNKNOWN\n");
}

TEST_F(OperLogRecordTest, ARequestThatDoesNotTellItsNameLeavesAMarkedRecord) {
    ASSERT_TRUE(InitLog({{"bLogOperation", "1"}}));
    info.operationRaises = true;
    TaWriteOperLog(&info, 0);
    EXPECT_EQ(OnlyRecord(),
              "---MessageType:  REQUEST, RemoteAddress:  \n--- Request ID = 0, Operation Name = UNKNOWN\n"
              "ERROR: Exception occurred when parsing message!...this record is not full!");
    const auto debug = capture->Entries("corbadebug");
    ASSERT_EQ(debug.size(), 1u);
    ExpectEntry(debug[0], "corbadebug", 3, "logmgr", 652,
                "[CorbaLogMgr::GetOperLogRecord] CORBA exception <" +
                    qv_orb::ExceptionText(qv_test::FakeServerRequestInfo::OperationFailure()) +
                    "> received when parsing operation name & request_id!");
}

TEST_F(OperLogRecordTest, ARecordWithoutARequestIsMarked) {
    ASSERT_TRUE(InitLog({{"bLogOperation", "1"}}));
    TaWriteOperLog(nullptr, 1);
    EXPECT_NE(OnlyRecord().find("...this record is not full!"), std::string::npos);
    const auto debug = capture->Entries("corbadebug");
    ASSERT_EQ(debug.size(), 1u);
    ExpectEntry(debug[0], "corbadebug", 3, "logmgr", 810,
                "[CorbaLogMgr::GetOperLogRecord] operation parameter is nullptr!");
}

TEST_F(OperLogRecordTest, AnExceptionOfTheHandlePassesToTheCaller) {
    ASSERT_TRUE(InitLog({{"bLogOperation", "1"}}));
    capture->SetWriteHook([](const qv_test::LogEntry&) { throw std::runtime_error("disk full"); });
    EXPECT_THROW(TaWriteOperLog(&info, 0), std::runtime_error);
}

}  // namespace
