// Calls through a real ORB whose requests the interceptor records, for tests of records that are made ahead.
#pragma once

#include <tao/ORBInitializer_Registry.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "preparedC.h"
#include "preparedS.h"
#include "tests/unit/logging/orb_environment.h"
#include "tests/unit/request/interceptor_fixture.h"

namespace qv_test {

using Info = PortableInterceptor::ServerRequestInfo_ptr;

constexpr unsigned char kRequest = 0;
constexpr unsigned char kReply = 1;

/// Hands the points of a request to the test.
class Points : public virtual PortableInterceptor::ServerRequestInterceptor {
  public:
    static inline std::function<void(Info)> request;
    static inline std::function<void(Info)> reply;

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

/// To be called ahead of all tests.
inline void RegisterOrb() {
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

}  // namespace qv_test
