#include <stdexcept>

#include "tests/unit/logging/record_fixture.h"
#include "valuesC.h"

// The list that a record shows of an exception, where it ends early.

namespace {

using namespace NS_CORBA;
using ExceptionText = qv_test::RecordFixture;

TEST_F(ExceptionText, AZeroOctetEndsIt) {
    CORBA::Any exception;
    exception <<= Values::Marked(0, "behind");
    std::string text;
    EXPECT_EQ(Manager().ParseExceptionInfo(exception, 2, text), 0);
    EXPECT_EQ(text, "USER_EXCEPTION, ExceptList = {\n--- Exception No.1 = {mark ");
    exception <<= Values::Marked('m', "behind");
    EXPECT_EQ(Manager().ParseExceptionInfo(exception, 2, text), 0);
    EXPECT_EQ(text, "USER_EXCEPTION, ExceptList = {\n--- Exception No.1 = {mark m behind behind}\n}");
}

TEST_F(ExceptionText, AnExceptionOfAnotherKindWithinIsToldWithoutItsText) {
    Values::Maybe maybe;
    maybe._default();
    CORBA::Any unprintable;
    unprintable <<= maybe;
    capture->SetWriteHook([](const qv_test::LogEntry& entry) {
        if (entry.line == 1054) {
            throw std::runtime_error("disk full");
        }
    });
    std::string text = "before";
    EXPECT_EQ(Manager().ParseExceptionInfo(unprintable, 1, text), -1);
    capture->SetWriteHook({});
    EXPECT_EQ(
        text,
        "SYSTEM_EXCEPTION, ExceptList = {\n}---ERROR: Exception occurred when parsing exception message!");
    const auto debug = capture->Entries("corbadebug");
    ASSERT_FALSE(debug.empty());
    qv_test::ExpectEntry(
        debug.back(), "corbadebug", 3, "logmgr", 1130,
        "[CorbaLogMgr::ParseExceptionInfo] CORBA exception received when parsing exception message!");
}

}  // namespace
