// The call chain of a request whose record is made ahead: its span is opened all the same, and ahead of what
// is written.

#include <stdexcept>

#include "tests/unit/logging/fake_call_chain.h"
#include "tests/unit/request/prepared_record_fixture.h"

namespace {

using namespace qv_test;

class ChainOfPreparedRecordTest : public PreparedRecordTest {
  protected:
    ChainOfPreparedRecordTest() { g_callChain = {&chain, {}}; }
    ~ChainOfPreparedRecordTest() override { g_callChain = {}; }

    FakeCallChain chain;
};

TEST_F(ChainOfPreparedRecordTest, TheSpanIsOpenedAheadOfTheRecordAndReportedWithTheReply) {
    Points::reply = [](Info request) { NS_CORBA::TaWriteOperLog(request, kReply); };
    std::vector<std::size_t> opened;
    capture->SetWriteHook([&](const LogEntry& entry) {
        if (entry.category == "corbaoper") {
            opened.push_back(chain.Set().size());
        }
    });
    Store("first");
    Store("second");
    EXPECT_EQ(opened, (std::vector<std::size_t>{1, 1, 2, 2}));
    const auto set = chain.Set();
    const auto spans = chain.Spans();
    ASSERT_EQ(set.size(), 2u);
    ASSERT_EQ(spans.size(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(spans[i]["traceId"].asString(), set[i].trace);
        EXPECT_EQ(spans[i]["parentId"].asString(), "0");
    }
    EXPECT_FALSE(set[0].trace.empty());
    EXPECT_NE(set[0].trace, set[1].trace);
    EXPECT_FALSE(capture->Contains("corbadebug", "TraceId2TimeMap"));
}

TEST_F(ChainOfPreparedRecordTest, ARequestWhoseSpanCannotBeOpenedLeavesNoRecord) {
    g_callChain.newId = []() -> std::string { throw std::runtime_error("no ids"); };
    Store("lost");
    EXPECT_TRUE(Records().empty());
    g_callChain.newId = {};
    Store("kept");
    ASSERT_EQ(Records().size(), 1u);
    EXPECT_NE(Records()[0].find("No.1 = kept\n"), std::string::npos);
}

}  // namespace
