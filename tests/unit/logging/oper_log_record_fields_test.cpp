#include <initializer_list>

#include "logging/log_records.h"
#include "logging/record_stamp.h"
#include "standalone/thread_setup.h"
#include "tests/unit/logging/record_fixture.h"

// The fields of a record, and what its text is when a field ends it.

namespace {

using namespace NS_CORBA;
using qv_test::FakeOperation;
using OperLogRecordFields = qv_test::RecordFixture;

constexpr char kAddress[] = "<USERNAME_TAG>oss1</USERNAME_TAG><IPANDPORT_TAG>192.0.2.7:40001</IPANDPORT_TAG>";
constexpr char kNothingPrinted[] = "ParaList = {\n } ";

TEST_F(OperLogRecordFields, AreStampedAndFilledForEachTypeOfMessage) {
    FakeOperation operation("hello");
    operation.CalledBy("oss1", "192.0.2.7:40001");
    operation.id = 4294967295u;
    operation.status = PortableInterceptor::SYSTEM_EXCEPTION;
    operation.exception <<= CORBA::NO_PERMISSION(5, CORBA::COMPLETED_NO);
    for (const unsigned char type : std::initializer_list<unsigned char>{0, 1, 2, 3, 255}) {
        TALogRecord record;
        const ACE_Time_Value before = RecordTime();
        EXPECT_EQ(Manager().GetOperLogRecord(&operation, type, record), 0);
        EXPECT_GE(record.time, before);
        EXPECT_LE(record.time, RecordTime());
        EXPECT_EQ(record.threadId, RecordThreadId());
        EXPECT_EQ(record.messageType, type);
        EXPECT_EQ(record.requestId, 4294967295u);
        EXPECT_EQ(record.operationName, "hello");
    }
}

TEST_F(OperLogRecordFields, ARecordFilledASecondTimeKeepsNothingOfTheFirst) {
    FakeOperation operation("hello");
    operation.CalledBy("oss1", "192.0.2.7:40001");
    TALogRecord record;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(Manager().GetOperLogRecord(&operation, 0, record), 0);
        EXPECT_EQ(record.paramInfo, kNothingPrinted);
        EXPECT_EQ(record.requestId, 17u);
        EXPECT_EQ(record.remoteAddress, kAddress);
    }
    operation.operationRaises = true;
    EXPECT_EQ(Manager().GetOperLogRecord(&operation, 0, record), -1);
    EXPECT_EQ(record.paramInfo, "ERROR: Exception occurred when parsing message!");
    EXPECT_EQ(record.requestId, 0u);
    EXPECT_EQ(record.operationName, "UNKNOWN");
}

TEST_F(OperLogRecordFields, WithoutARequestTheRecordStaysAsItWas) {
    TALogRecord record;
    record.requestId = 5;
    record.paramInfo = "kept";
    EXPECT_EQ(Manager().GetOperLogRecord(nullptr, 0, record), -1);
    EXPECT_EQ(record.requestId, 5u);
    EXPECT_EQ(record.paramInfo, "kept");
}

TEST_F(OperLogRecordFields, ANulInTheCallersNameEndsTheWholeRecordAndNotTheAudit) {
    qv_standalone::SetThreadContext(std::string("[oss\0 2][192.0.2.8:5]", 21), "");
    services.security.levels["hello"] = 2;
    FakeOperation operation("hello");
    EXPECT_EQ(Record(operation, 0), "---MessageType:  REQUEST, RemoteAddress:  <USERNAME_TAG>oss");
    EXPECT_EQ(Record(operation, 1), "---MessageType:  REPLY, RemoteAddress:  <USERNAME_TAG>oss");
    operation.operationRaises = true;
    EXPECT_EQ(Record(operation, 0), "---MessageType:  REQUEST, RemoteAddress:  <USERNAME_TAG>oss");
    qv_standalone::ClearThreadContext();
    ASSERT_EQ(services.audit.begun.size(), 1u);
    EXPECT_EQ(services.audit.begun[0].fields["strInfo"], kNothingPrinted);
    ASSERT_EQ(services.audit.ended.size(), 1u);
    EXPECT_EQ(services.audit.ended[0].detail, "ReplyStatus = SUCCESSFUL!\n");
}

}  // namespace
