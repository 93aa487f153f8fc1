// Each call leaves one record of its request, one of its end, and one span.
#include <gmock/gmock.h>
#include <json/reader.h>
#include <json/value.h>

#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/e2e/harness/oss_in_process.h"
#include "tests/support/wait_for.h"

namespace qv_e2e {
namespace {

using Counts = std::map<std::string, int>;

const std::string kKind = "---MessageType:  ";
const std::string kOperation = "Operation Name = ";

/// How often each operation stands in the log with that kind of record.
Counts Records(const std::string& log, const std::string& kind) {
    Counts counts;
    for (std::size_t at = log.find(kKind + kind); at != std::string::npos;
         at = log.find(kKind + kind, at + 1)) {
        const std::size_t begin = log.find(kOperation, at) + kOperation.size();
        ++counts[log.substr(begin, log.find('\n', begin) - begin)];
    }
    return counts;
}

/// How often each "Interface/operation" ends the name of a span; each line of the file is one.
Counts Spans(const std::string& file) {
    const std::string path = "/rest/mrb/v1/corba/:";
    Counts counts;
    std::istringstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t at = line.find(path);
        const std::size_t begin = at == std::string::npos ? 0 : at + path.size();
        ++counts[line.substr(begin, line.find('"', begin) - begin)];
    }
    return counts;
}

/// The spans of the file, each line of which is one in JSON.
std::vector<Json::Value> ReadSpans(const std::string& file) {
    std::vector<Json::Value> spans;
    std::istringstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream text(line);
        Json::Value span;
        text >> span;
        spans.push_back(span);
    }
    return spans;
}

/// A session with calls that fail.
class RecordsTest : public InterfaceTest {
  protected:
    void Work() {
        deployment.Set("bLogOperation", "true");
        deployment.SetPlatform("call_chain", "true");
        Start();
        const CORBA::String_var version = factory->getVersion();
        EXPECT_EQ(FailureOf([&] { LogIn("oss", "wrong"); }), globaldefs::EXCPT_ACCESS_DENIED);
        const auto session = LogIn();
        session->ping();
        session->ping();
        const auto elements = Elements(session.in());
        managedElement::ManagedElement_T_var element;
        elements->getManagedElement(ElementName("Zorvex/KLV", "NE-00001"), element.out());
        const auto unknown = ElementName("Zorvex/KLV", "NE-x");
        EXPECT_EQ(FailureOf([&] { elements->getManagedElement(unknown, element.out()); }),
                  globaldefs::EXCPT_ENTITY_NOT_FOUND);
        session->endSession();
        const auto is_written = [&] {
            return Records(deployment.Log("corbaoper.log"), "REPLY")["endSession"] == 1 &&
                   Spans(deployment.Log("callchain.jsonl"))["EmsSession_I/endSession"] == 1;
        };
        EXPECT_TRUE(qv_test::WaitFor(is_written));
    }
};

TEST_F(RecordsTest, EachCallLeavesOneOfItsRequestAndOneOfItsEndAndOneSpan) {
    Work();
    const std::string log = deployment.Log("corbaoper.log");
    const Counts requests{{"getVersion", 1}, {"getEmsSession", 2},     {"ping", 2},
                          {"getManager", 1}, {"getManagedElement", 2}, {"endSession", 1}};
    EXPECT_EQ(Records(log, "REQUEST"), requests);
    const Counts failed{{"getEmsSession", 1}, {"getManagedElement", 1}};
    EXPECT_EQ(Records(log, "EXCEPTION"), failed);
    Counts answered = requests;
    for (const auto& [operation, count] : failed) {
        answered[operation] -= count;
    }
    EXPECT_EQ(Records(log, "REPLY"), answered);
    EXPECT_EQ(log.find("not full"), std::string::npos);
    EXPECT_EQ(log.find("UNKNOW ADDRESS"), std::string::npos);
    const Counts spans{{"EmsSessionFactory_I/getVersion", 1},
                       {"EmsSessionFactory_I/getEmsSession", 2},
                       {"EmsSession_I/ping", 2},
                       {"EmsSession_I/getManager", 1},
                       {"ManagedElementMgr_I/getManagedElement", 2},
                       {"EmsSession_I/endSession", 1}};
    EXPECT_EQ(Spans(deployment.Log("callchain.jsonl")), spans);
}

TEST_F(RecordsTest, EachCallHasAChainOfItsOwnFromItsRequestToItsEnd) {
    Work();
    std::set<std::string> traces;
    const std::vector<Json::Value> spans = ReadSpans(deployment.Log("callchain.jsonl"));
    for (const Json::Value& span : spans) {
        const std::string trace = span["traceId"].asString();
        EXPECT_FALSE(trace.empty());
        EXPECT_TRUE(traces.insert(trace).second) << trace;
        EXPECT_FALSE(span["id"].asString().empty());
        EXPECT_EQ(span["parentId"].asString(), "0");
        const Json::Value& annotations = span["annotations"];
        ASSERT_EQ(annotations.size(), 2u);
        EXPECT_GT(annotations[0]["timestamp"].asInt64(), 0);
        EXPECT_LE(annotations[0]["timestamp"].asInt64(), annotations[1]["timestamp"].asInt64());
    }
    EXPECT_EQ(spans.size(), 9u);
    EXPECT_EQ(deployment.Log("corbadebug.log").find("TraceId2TimeMap"), std::string::npos);
}

}  // namespace
}  // namespace qv_e2e
