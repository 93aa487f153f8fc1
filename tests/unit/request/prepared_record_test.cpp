// The record of a request with its text made ahead of the lock, for calls through a real ORB: it has to be
// what the log manager writes when it is asked directly, and to leave nothing for another request.

#include <tao/ORBInitializer_Registry.h>

#include <functional>
#include <map>
#include <stdexcept>
#include <thread>

#include "preparedC.h"
#include "preparedS.h"
#include "tests/unit/logging/orb_environment.h"
#include "tests/unit/request/interceptor_fixture.h"

namespace {

using qv_test::LogEntry;
using Info = PortableInterceptor::ServerRequestInfo_ptr;

constexpr unsigned char kRequest = 0;
constexpr unsigned char kReply = 1;

/// Hands the points of a request to the test.
class Points : public virtual PortableInterceptor::ServerRequestInterceptor {
  public:
    static std::function<void(Info)> request;
    static std::function<void(Info)> reply;

    char* name() override { return CORBA::string_dup("points"); }
    void destroy() override {}
    void receive_request_service_contexts(Info) override {}
    void receive_request(Info info) override { Run(request, info); }
    void send_reply(Info info) override { Run(reply, info); }
    void send_exception(Info) override {}
    void send_other(Info) override {}

  private:
    static void Run(const std::function<void(Info)>& point, Info info) {
        if (point) {
            point(info);
        }
    }
};

std::function<void(Info)> Points::request;
std::function<void(Info)> Points::reply;

class Initializer : public virtual PortableInterceptor::ORBInitializer {
  public:
    void pre_init(PortableInterceptor::ORBInitInfo_ptr) override {}
    void post_init(PortableInterceptor::ORBInitInfo_ptr info) override {
        PortableInterceptor::ServerRequestInterceptor_var points = new Points;
        info->add_server_request_interceptor(points);
    }
};

class TargetServant : public POA_PreparedTest::Target {
  public:
    void ping() override {}
    CORBA::Long store(const char*, const CORBA::Any&, char*& note, CORBA::String_out answer) override {
        CORBA::string_free(note);
        note = CORBA::string_dup("a note of the servant's that is longer than the client's");
        answer = CORBA::string_dup("stored");
        return 7;
    }
    void modifyPassword(const char*, const char*, const char*) override {}
    void logOutSession(const char*) override {}
    char* take(const PreparedTest::Octets&, char*& more, const char* last) override {
        CORBA::string_free(more);
        more = CORBA::string_dup("given back");
        return CORBA::string_dup(last);
    }
};

void RegisterOrb() {
    PortableInterceptor::ORBInitializer_var initializer = new Initializer;
    PortableInterceptor::register_orb_initializer(initializer);
    qv_test::TestOrb();
}

class PreparedRecordTest : public qv_test::InterceptorFixture {
  protected:
    PreparedRecordTest() {
        EnableStatistics(true);
        PortableServer::POA_ptr poa = qv_test::TestRootPoa();
        m_id = poa->activate_object(&m_servant);
        const CORBA::Object_var object = poa->id_to_reference(m_id.in());
        const PortableServer::POAManager_var manager = poa->the_POAManager();
        manager->activate();
        target = PreparedTest::Target::_narrow(object);
        NS_CORBA::CorbaBaseAgentConfig::Instance()->SetOrb(qv_test::TestOrb());
    }
    ~PreparedRecordTest() override { qv_test::TestRootPoa()->deactivate_object(m_id.in()); }

    void SetUp() override {
        ASSERT_TRUE(InitLog({{"bLogOperation", "1"}}));
        m_gate.emplace();
        Points::request = [this](Info request) { Gate().RecordOperCount(request); };
    }
    void TearDown() override {
        Points::request = {};
        Points::reply = {};
        capture->SetWriteHook({});
        m_gate.reset();
        InterceptorFixture::TearDown();
    }

    Server_Request_Interceptor& Gate() { return **m_gate; }

    void Store(const char* name, const CORBA::Any& detail) {
        CORBA::String_var note = CORBA::string_dup("note");
        CORBA::String_var answer;
        target->store(name, detail, note.inout(), answer.out());
    }
    void Store(const char* name) {
        CORBA::Any detail;
        detail <<= static_cast<CORBA::Long>(5);
        Store(name, detail);
    }

    /// The records that were written, without what depends on the call.
    std::vector<std::string> Records() {
        std::vector<std::string> texts;
        for (const LogEntry& entry : capture->Entries("corbaoper")) {
            texts.push_back(entry.text);
        }
        return texts;
    }

    /// Has each request recorded by the interceptor and then by the log manager itself, and expects the same
    /// entries from both. @return those of the interceptor
    std::vector<LogEntry> ExpectAsWrittenDirectly(const std::function<void()>& call) {
        std::vector<LogEntry> gate;
        std::vector<LogEntry> direct;
        Points::request = [&](Info request) {
            capture->Clear();
            Gate().RecordOperCount(request);
            gate = capture->Entries();
            capture->Clear();
            NS_CORBA::SetPos("agent_request_interceptor", 113);
            NS_CORBA::TaWriteOperLog(request, kRequest);
            direct = capture->Entries();
        };
        call();
        EXPECT_EQ(gate.size(), direct.size());
        for (std::size_t i = 0; i < gate.size() && i < direct.size(); ++i) {
            qv_test::ExpectEntry(gate[i], direct[i].category, direct[i].level, direct[i].file, direct[i].line,
                                 direct[i].text);
        }
        return gate;
    }

    /// The record of the reply, without its request id; of a request that the interceptor recorded, or else
    /// the log manager itself, which leaves nothing to the reply.
    std::string ReplyOf(bool prepared, const std::function<void()>& call) {
        std::string text;
        Points::request = [&](Info request) {
            if (prepared) {
                Gate().RecordOperCount(request);
            } else {
                NS_CORBA::TaWriteOperLog(request, kRequest);
            }
        };
        Points::reply = [&](Info reply) {
            capture->Clear();
            NS_CORBA::TaWriteOperLog(reply, kReply);
            text = Records().at(0);
        };
        call();
        return text.substr(text.find(", Operation Name"));
    }

    std::string ExpectSameReply(const std::function<void()>& call) {
        const std::string reply = ReplyOf(true, call);
        EXPECT_EQ(reply, ReplyOf(false, call));
        return reply;
    }

    void TakeOctets(const std::string& octets, const char* last) {
        PreparedTest::Octets sequence;
        sequence.length(static_cast<CORBA::ULong>(octets.size()));
        std::copy(octets.begin(), octets.end(), sequence.get_buffer());
        CORBA::String_var more = CORBA::string_dup("more");
        const CORBA::String_var result = target->take(sequence, more.inout(), last);
    }

    /// A value that no record can show: a union without an active member.
    static CORBA::Any Unprintable() {
        PreparedTest::Maybe maybe;
        maybe._default();
        CORBA::Any any;
        any <<= maybe;
        return any;
    }

    PreparedTest::Target_var target;

  private:
    TargetServant m_servant;
    PortableServer::ObjectId_var m_id;
    std::optional<qv_test::OwnInterceptor> m_gate;
};

TEST_F(PreparedRecordTest, TheRecordIsTheLogManagersOwn) {
    const auto stored = ExpectAsWrittenDirectly([this] { Store("first"); });
    ASSERT_EQ(stored.size(), 1u);
    EXPECT_NE(stored[0].text.find("ParaList = {\n--- Parameter No.1 = first\n--- Parameter No.2 = 5\n"
                                  "--- Parameter No.3 = note\n } "),
              std::string::npos);
    EXPECT_EQ(ExpectAsWrittenDirectly([this] { target->ping(); }).size(), 1u);
}

TEST_F(PreparedRecordTest, SecretsAreMasked) {
    const auto entries =
        ExpectAsWrittenDirectly([this] { target->modifyPassword("oss1", "old secret", "new secret"); });
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_NE(entries[0].text.find("No.1 = oss1\n--- Parameter No.2 = ******\n--- Parameter No.3 = ******\n"),
              std::string::npos);
    EXPECT_EQ(entries[0].text.find("secret"), std::string::npos);
}

TEST_F(PreparedRecordTest, ARiskyRequestIsAuditedWithItsBody) {
    services.security.levels["modifyPassword"] = 2;
    target->modifyPassword("oss1", "old secret", "new secret");
    ASSERT_EQ(services.audit.begun.size(), 1u);
    EXPECT_EQ(services.audit.begun[0].fields["operName"], "modifyPassword");
    EXPECT_EQ(services.audit.begun[0].fields["strInfo"],
              "ParaList = {\n--- Parameter No.1 = oss1\n--- Parameter No.2 = ******\n"
              "--- Parameter No.3 = ******\n } ");
}

TEST_F(PreparedRecordTest, WhatCannotBePrintedIsToldOnceAndAsEver) {
    const CORBA::Any unprintable = Unprintable();
    const auto entries = ExpectAsWrittenDirectly([&] { Store("first", unprintable); });
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].category, "corbadebug");
    EXPECT_NE(entries[1].text.find("...this record is not full!"), std::string::npos);
    EXPECT_EQ(Statistics(), "store = 1\n");
}

TEST_F(PreparedRecordTest, AnAuditThatFailsIsToldOnceAndAsEver) {
    services.RemoveSecurity();
    const auto entries = ExpectAsWrittenDirectly([this] { Store("first"); });
    ASSERT_EQ(entries.size(), 2u);
    qv_test::ExpectEntry(entries[0], "corbadebug", 3, "logmgr", 561,
                         "[CorbaLogMgr::GetOperLogRecord] CORBA exception received when parsing message!");
    EXPECT_NE(entries[1].text.find(" } ---ERROR: Exception occurred when parsing message!...this record is "
                                   "not full!"),
              std::string::npos);
}

TEST_F(PreparedRecordTest, ARequestRecordedWhileAnotherIsWrittenHasItsOwnText) {
    qv_test::FakeOperation other("other");
    other.AddText("of the other");
    bool within = false;
    capture->SetWriteHook([&](const LogEntry& entry) {
        if (entry.category == "corbaoper" && !within) {
            within = true;
            NS_CORBA::TaWriteOperLog(&other, kRequest);
        }
    });
    Store("first");
    const auto records = Records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_NE(records[0].find("Operation Name = other\nParaList = {\n--- Parameter No.1 = of the other\n } "),
              std::string::npos);
    EXPECT_EQ(records[0].find("first"), std::string::npos);
    EXPECT_NE(records[1].find("Operation Name = store\nParaList = {\n--- Parameter No.1 = first\n"),
              std::string::npos);
}

TEST_F(PreparedRecordTest, NothingIsLeftOfARequestWhoseRecordFailed) {
    capture->SetWriteHook([](const LogEntry& entry) {
        if (entry.category == "corbaoper") {
            throw std::runtime_error("disk full");
        }
    });
    Store("lost");
    EXPECT_FALSE(std::filesystem::exists(StatisticsPath()));
    capture->SetWriteHook({});
    capture->Clear();
    info.operationName = "other";
    NS_CORBA::TaWriteOperLog(&info, kRequest);
    Store("kept");
    const auto records = Records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_NE(records[0].find("Operation Name = other"), std::string::npos);
    EXPECT_EQ(records[0].find("lost"), std::string::npos);
    EXPECT_NE(records[1].find("No.1 = kept"), std::string::npos);
    EXPECT_EQ(Statistics(), "store = 1\n");
}

TEST_F(PreparedRecordTest, ARefusedRequestIsNotRead) {
    qv_test::NotingHooks hooks;
    NS_CORBA::CorbaBaseAgentConfig::Instance()->SetReqInterceptorImpl(&hooks);
    hooks.before = [] { throw CORBA::NO_PERMISSION(); };
    Points::request = [this](Info request) { Gate().receive_request(request); };
    services.security.hook = [] { FAIL() << "the refused request was rated"; };
    EXPECT_THROW(target->modifyPassword("oss1", "old secret", "new secret"), CORBA::NO_PERMISSION);
    EXPECT_TRUE(capture->Entries().empty());
    services.security.hook = {};
    hooks.before = {};
    target->ping();
    const auto records = Records();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_NE(records[0].find("Operation Name = ping\nParaList = {\n } "), std::string::npos);
    NS_CORBA::CorbaBaseAgentConfig::Instance()->SetReqInterceptorImpl(nullptr);
}

TEST_F(PreparedRecordTest, TheReplyShowsWhatTheRequestBroughtAndWhatTheServantGave) {
    capture->SetVerbose(1);
    Points::reply = [](Info request) { NS_CORBA::TaWriteOperLog(request, kReply); };
    Store("first");
    const auto records = Records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_NE(records[1].find("ParaList = {\n--- Parameter No.1 = first\n--- Parameter No.2 = 5\n"
                              "--- Parameter No.3 = a note of the servant's that is longer than the "
                              "client's\n--- Parameter No.4 = stored\n } store @return: 7\n"),
              std::string::npos);
}

TEST_F(PreparedRecordTest, TheReplyDoesNotDependOnWhatTheRequestLeft) {
    for (const int verbose : {0, 1}) {
        capture->SetVerbose(verbose);
        EXPECT_NE(ExpectSameReply([this] { Store("first"); }).find("No.1 = first\n"), std::string::npos);
        ExpectSameReply([this] { TakeOctets("abc", "last"); });
        ExpectSameReply([this] { target->ping(); });
        ExpectSameReply([this] { TakeOctets(std::string(200000, 'x'), "last"); });  // too much to be kept
    }
}

TEST_F(PreparedRecordTest, AReplyBehindAZeroOctetIsCutThere) {
    capture->SetVerbose(1);
    const std::string reply = ExpectSameReply([this] { TakeOctets(std::string("a\0b", 3), "last"); });
    EXPECT_EQ(reply, ", Operation Name = take\nParaList = {\n--- Parameter No.1 = {a take @return: last\n");
}

TEST_F(PreparedRecordTest, TheReplyKeepsSecretsMasked) {
    const std::string changed =
        ExpectSameReply([this] { target->modifyPassword("oss1", "old secret", "new secret"); });
    EXPECT_NE(changed.find("No.1 = oss1\n--- Parameter No.2 = ******\n--- Parameter No.3 = ******\n"),
              std::string::npos);
    const std::string ended =
        ExpectSameReply([this] { target->logOutSession("{{name USERPWD value my secret}}"); });
    EXPECT_NE(ended.find("{{name USERPWD value ******}}"), std::string::npos);
    EXPECT_EQ((changed + ended).find("secret"), std::string::npos);
}

TEST_F(PreparedRecordTest, AReplyWhoseRequestIsNotWhollyPrintedTellsWhatItCan) {
    const CORBA::Any unprintable = Unprintable();
    ExpectSameReply([&] { Store("first", unprintable); });
}

TEST_F(PreparedRecordTest, RecordsOfManyThreadsComeInTheOrderOfTheCounts) {
    std::map<std::string, unsigned long> written;  // by the records so far; the interceptor's lock guards it
    std::string expected;
    int misplaced = 0;
    capture->SetWriteHook([&](const LogEntry& entry) {
        if (entry.category != "corbaoper") {
            return;
        }
        // Whoever has written a record ahead of this one has counted it, and nobody after it has.
        misplaced += std::filesystem::exists(StatisticsPath()) && Statistics() != expected ? 1 : 0;
        ++written[entry.text.find("Operation Name = ping\n") != std::string::npos ? "ping" : "store"];
        expected.clear();
        for (const auto& [operation, count] : written) {
            expected += operation + " = " + std::to_string(count) + "\n";
        }
    });
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([this, thread] {
            for (int call = 0; call < 50; ++call) {
                if (call % 2 == 0) {
                    target->ping();
                } else {
                    Store(std::string(static_cast<std::size_t>(1 + thread), 'n').c_str());
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(misplaced, 0);
    EXPECT_EQ(Records().size(), 200u);
    EXPECT_EQ(Statistics(), "ping = 100\nstore = 100\n");
}

TEST_F(PreparedRecordTest, WithTheLogOffNothingIsAskedOfTheRequest) {
    NS_CORBA::CorbaLogMgr::Destroy();
    ASSERT_TRUE(InitLog({{"bLogOperation", "0"}}));
    int asked = 0;
    qv_test::FakeOperation fake("ping");
    fake.adapterRaises = [&asked] { ++asked; };
    fake.argumentsRaise = [&asked] { ++asked; };
    Gate().RecordOperCount(&fake);
    EXPECT_EQ(asked, 0);
    EXPECT_EQ(fake.operationCalls, 1);
    EXPECT_EQ(Statistics(), "ping = 1\n");
    EXPECT_TRUE(Records().empty());
}

TEST_F(PreparedRecordTest, ARequestWithAnysOnlyIsReadOnce) {
    int asked = 0;
    qv_test::FakeOperation fake("ping");
    fake.adapterRaises = [&asked] { ++asked; };
    Gate().RecordOperCount(&fake);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(Records().size(), 1u);
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    RegisterOrb();
    return RUN_ALL_TESTS();
}
