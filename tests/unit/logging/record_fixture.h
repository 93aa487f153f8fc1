#pragma once

#include <stdexcept>
#include <string>

#include "orb/portability.h"
#include "tests/unit/logging/fake_operation.h"
#include "tests/unit/logging/fake_services.h"
#include "tests/unit/logging/log_fixture.h"
#include "tests/unit/logging/orb_environment.h"

namespace qv_test {

/// A test of operation records: the operation log is on, security and audit are fakes.
class RecordFixture : public LogFixture {
  protected:
    RecordFixture() { TestOrb(); }  // without an ORB no string goes into an Any

    void SetUp() override { ASSERT_TRUE(InitLog({{"bLogOperation", "1"}})); }

    /// The text of the record that the message leaves.
    std::string Record(FakeOperation& operation, unsigned char messageType) {
        capture->Clear();
        NS_CORBA::TaWriteOperLog(&operation, messageType);
        const auto records = capture->Entries("corbaoper");
        EXPECT_EQ(records.size(), 1u);
        return records.empty() ? "" : records[0].text;
    }

    /// Expects exactly one line in the debug channel.
    void ExpectDebugLine(int line, const std::string& text) {
        const auto debug = capture->Entries("corbadebug");
        ASSERT_EQ(debug.size(), 1u);
        ExpectEntry(debug[0], "corbadebug", 3, "logmgr", line, text);
    }

    /// A text with a place for what the ORB says of `ex`.
    static std::string With(const std::string& before, const CORBA::Exception& ex, const std::string& after) {
        return before + qv_orb::ExceptionText(ex) + after;
    }

    FakeServices services;
};

}  // namespace qv_test
