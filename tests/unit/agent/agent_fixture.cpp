#include "tests/unit/agent/agent_fixture.h"

#include <sys/utsname.h>

#include <algorithm>
#include <fstream>

#include "agent/agentserver.h"
#include "logging/logmgr.h"
#include "tests/support/free_port.h"

/// For the leak checker, where the tests are built with one: an option that replaces a file name leaves the
/// former name behind, which is how the agent behaves.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:NewText\n";
}

namespace qv_test {

namespace {

std::vector<std::string> SourceLines(const std::string& file) {
    std::ifstream input(std::string(QV_SOURCE_DIR) + "/agent/" + file + ".cpp");
    std::vector<std::string> lines;
    for (std::string line; std::getline(input, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string AsInSource(const std::string& text) {
    std::string source;
    for (const char c : text) {
        source += c == '\n' ? std::string("\\n") : std::string(1, c);
    }
    return source;
}

bool StartsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

}  // namespace

int LineOfCall(const std::string& file, const std::string& snippet) {
    const std::vector<std::string> lines = SourceLines(file);
    int position = -1;
    int found = -1;
    int occurrences = 0;
    for (int i = 0; i < static_cast<int>(lines.size()); ++i) {
        const std::string& line = lines[static_cast<std::size_t>(i)];
        if (line.find("TA_POS;") != std::string::npos) {
            position = i + 1;
        }
        if (line.find(snippet) != std::string::npos) {
            found = position;
            ++occurrences;
        }
    }
    EXPECT_EQ(1, occurrences) << "of \"" << snippet << "\" in agent/" << file << ".cpp";
    return occurrences == 1 ? found : -1;
}

AgentTest::AgentTest() {
    NS_CORBA::CorbaBaseAgentConfig::Destroy();
    NS_CORBA::CorbaLogMgr::Destroy();
    NS_CORBA::CorbaLogMgr::Instance()->Init();
    m_log->Clear();
}

AgentTest::~AgentTest() {
    NS_CORBA::AgentServer::Destroy();
    NS_CORBA::DistriSvcMgrRefPoaMgr::Destroy();
    NS_CORBA::CorbaBaseAgentConfig::Destroy();
    NS_CORBA::CorbaLogMgr::Destroy();
}

void AgentTest::ExpectEntry(const std::string& channel, int level, const std::string& file,
                            const std::string& text, bool whole, const std::string& snippet) {
    const std::vector<LogEntry> entries = m_log->Entries(channel);
    const auto found = std::find_if(entries.begin(), entries.end(), [&](const LogEntry& entry) {
        return whole ? entry.text == text : StartsWith(entry.text, text);
    });
    if (found == entries.end()) {
        std::string all;
        for (const LogEntry& entry : entries) {
            all += "\n  " + entry.text;
        }
        ADD_FAILURE() << "not logged to " << channel << ": " << text << "\nbut" << all;
        return;
    }
    EXPECT_EQ(level, found->level) << text;
    EXPECT_EQ(file, found->file) << text;
    EXPECT_EQ("unknown", found->function) << text;
    EXPECT_EQ(LineOfCall(file, snippet), found->line) << text;
}

void AgentTest::ExpectLog(const std::string& channel, int level, const std::string& file,
                          const std::string& text, std::string snippet) {
    if (snippet.empty()) {
        snippet = '"' + AsInSource(text) + '"';
    }
    ExpectEntry(channel, level, file, text, true, snippet);
}

void AgentTest::ExpectLogPrefix(const std::string& channel, int level, const std::string& file,
                                const std::string& prefix, std::string snippet) {
    if (snippet.empty()) {
        snippet = AsInSource(prefix);
    }
    ExpectEntry(channel, level, file, prefix, false, snippet);
}

void AgentTest::ExpectExceptionLog(const std::string& file, const std::string& text) {
    const std::string head = "Exception: " + text + "==>";
    ExpectLogPrefix(kDebug, 1, file, head, '"' + text + '"');
    const std::unique_ptr<LogEntry> entry = m_log->Find(kDebug, head);
    EXPECT_TRUE(entry != nullptr && entry->text.find("IDL:", head.size()) != std::string::npos)
        << "no description of the exception behind " << text;
}

int AgentTest::CountLog(const std::string& channel, const std::string& text) {
    const std::vector<LogEntry> entries = m_log->Entries(channel);
    return static_cast<int>(std::count_if(entries.begin(), entries.end(),
                                          [&](const LogEntry& entry) { return entry.text == text; }));
}

CORBA::ORB_ptr AgentTest::MakeOrb(const std::vector<std::string>& options) {
    std::vector<std::string> arguments{"-ORBId", "agent-test", "-ORBEndpoint",
                                       "iiop://127.0.0.1:" + std::to_string(FreePort())};
    arguments.insert(arguments.end(), options.begin(), options.end());
    std::vector<char*> argv;
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    int argc = static_cast<int>(arguments.size());
    CORBA::ORB_var orb = CORBA::ORB_init(argc, argv.data(), nullptr);
    config().SetOrb(orb.in());
    return orb._retn();
}

std::string NodeName() {
    utsname node{};
    return uname(&node) == 0 ? node.nodename : "";
}

}  // namespace qv_test
