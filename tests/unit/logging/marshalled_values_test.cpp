#include <functional>
#include <map>

#include "callsC.h"
#include "callsS.h"
#include "logging/log_records.h"
#include "tests/unit/logging/record_fixture.h"

#include <tao/ORBInitializer_Registry.h>

// Records of real calls. The way without Anys has to give what the way through the Anys gives, which the
// other tests compare with texts made by hand.

namespace {

using namespace NS_CORBA;

/// The same request, from which only the Anys can be had.
class AnysOnly final : public qv_test::FakeServerRequestInfo {
  public:
    explicit AnysOnly(PortableInterceptor::ServerRequestInfo* info) : m_info(info) {}

    char* operation() override { return m_info->operation(); }
    CORBA::ULong request_id() override { return m_info->request_id(); }
    Dynamic::ParameterList* arguments() override { return m_info->arguments(); }
    CORBA::Any* result() override { return m_info->result(); }
    PortableInterceptor::ReplyStatus reply_status() override { return m_info->reply_status(); }
    CORBA::StringSeq* adapter_name() override { return m_info->adapter_name(); }

  private:
    PortableInterceptor::ServerRequestInfo* const m_info;
};

struct Recorded {
    int result = 0;
    std::string text;
};

/// What both ways gave for the last call, by message type.
struct Comparison {
    std::map<int, Recorded> direct;
    std::map<int, Recorded> throughAnys;
};

Comparison& Last() {
    static Comparison last;
    return last;
}

Recorded Take(PortableInterceptor::ServerRequestInfo* info, unsigned char type) {
    TALogRecord record;
    Recorded recorded;
    recorded.result = CorbaLogMgr::Instance()->GetOperLogRecord(info, type, record);
    recorded.text = record.paramInfo;
    return recorded;
}

class Comparing : public virtual PortableInterceptor::ServerRequestInterceptor {
  public:
    char* name() override { return CORBA::string_dup("comparing"); }
    void destroy() override {}
    void receive_request_service_contexts(PortableInterceptor::ServerRequestInfo_ptr) override {}
    void receive_request(PortableInterceptor::ServerRequestInfo_ptr info) override { Compare(info, 0); }
    void send_reply(PortableInterceptor::ServerRequestInfo_ptr info) override { Compare(info, 1); }
    void send_exception(PortableInterceptor::ServerRequestInfo_ptr) override {}
    void send_other(PortableInterceptor::ServerRequestInfo_ptr) override {}

  private:
    static void Compare(PortableInterceptor::ServerRequestInfo_ptr info, unsigned char type) {
        AnysOnly anys(info);
        Last().direct[type] = Take(info, type);
        Last().throughAnys[type] = Take(&anys, type);
    }
};

class Initializer : public virtual PortableInterceptor::ORBInitializer {
  public:
    void pre_init(PortableInterceptor::ORBInitInfo_ptr) override {}
    void post_init(PortableInterceptor::ORBInitInfo_ptr info) override {
        PortableInterceptor::ServerRequestInterceptor_var interceptor = new Comparing;
        info->add_server_request_interceptor(interceptor);
    }
};

class TargetServant : public POA_Calls::Target {
  public:
    CORBA::Long mixed(const char*, Values::Point& place, Values::Longs_out numbers,
                      const CORBA::Any&) override {
        place.x += 1;
        place.label = CORBA::string_dup("after");
        numbers = new Values::Longs(3);
        numbers->length(3);
        for (CORBA::ULong i = 0; i < 3; ++i) {
            (*numbers)[i] = static_cast<CORBA::Long>(i);
        }
        return 77;
    }
    void given(CORBA::String_out text, CORBA::Any& detail, Values::Octets_out octets,
               CORBA::UShort) override {
        text = CORBA::string_dup("given");
        detail <<= CORBA::Double(2.5);
        octets = new Values::Octets(2);
        octets->length(2);
        (*octets)[0] = 'x';
        (*octets)[1] = m_secondOctet;
    }
    Values::Octets* blob(CORBA::Long size) override {
        auto* const octets = new Values::Octets;
        octets->length(static_cast<CORBA::ULong>(size));
        for (CORBA::ULong i = 0; i < octets->length(); ++i) {
            (*octets)[i] = static_cast<CORBA::Octet>(i % 251 + (m_secondOctet == 0 ? 0 : 1));
        }
        return octets;
    }
    Calls::Flags* large(const char* text, const Calls::Flags& flags, CORBA::String_out more,
                        CORBA::Long_out behind) override {
        more = CORBA::string_dup(text);
        behind = 4711;
        return new Calls::Flags(flags);
    }
    void nothing() override {}
    char* modifyPassword(const char*, const char*, const char*) override { return CORBA::string_dup("done"); }
    CORBA::Boolean planGateway(char*& secret, CORBA::Long_out code) override {
        CORBA::string_free(secret);
        secret = CORBA::string_dup("new secret");
        code = 12;
        return true;
    }
    Values::Maybe* maybe(CORBA::Boolean active) override {
        auto* const maybe = new Values::Maybe;
        if (active) {
            maybe->value(Values::Point());
        } else {
            maybe->_default();
        }
        return maybe;
    }
    void logOutSession(const Calls::NameValues&) override {}
    Values::Thing_ptr reference(Values::Thing_ptr thing) override { return Values::Thing::_duplicate(thing); }
    Values::Silent* silent(const Values::Silent&) override { return NewSilent(); }
    void hint(const Values::Rows&) override {}
    Values::Choice* choice() override { return new Values::Choice(m_choice); }
    void choice(const Values::Choice& choice) override { m_choice = choice; }

    /// Made where it stays: a copied fixed forgets its limits.
    static Values::Silent* NewSilent() {
        auto* const silent = new Values::Silent;
        silent->d = 1.5;
        silent->first = 11;
        silent->c = 'x';
        silent->ll = 1;
        silent->ull = 2;
        silent->ld = 3;
        silent->ws = CORBA::wstring_dup(L"wide");
        silent->wc = L'w';
        silent->amount = CORBA::Fixed("123.45");
        silent->fee = CORBA::Fixed("123.4");
        silent->type = CORBA::TypeCode::_duplicate(Values::_tc_Tree);
        silent->last = 12;
        return silent;
    }

    CORBA::Octet m_secondOctet = 'y';
    Values::Choice m_choice;
};

CORBA::ORB_ptr OrbWithInterceptor() {
    static CORBA::ORB_var orb = [] {
        PortableInterceptor::ORBInitializer_var initializer = new Initializer;
        PortableInterceptor::register_orb_initializer(initializer);
        return CORBA::ORB::_duplicate(qv_test::TestOrb());
    }();
    return orb.in();
}

class MarshalledValues : public qv_test::RecordFixture {
  protected:
    MarshalledValues() {
        PortableServer::POA_ptr poa = qv_test::TestRootPoa();
        m_id = poa->activate_object(&servant);
        const CORBA::Object_var object = poa->id_to_reference(m_id.in());
        PortableServer::POAManager_var manager = poa->the_POAManager();
        manager->activate();
        target = Calls::Target::_narrow(object);
        CorbaBaseAgentConfig::Instance()->SetOrb(qv_test::TestOrb());
        Last() = Comparison();
    }
    ~MarshalledValues() override { qv_test::TestRootPoa()->deactivate_object(m_id.in()); }

    /// Both ways gave the same for request and reply; `request` and `reply` are parts of it.
    void ExpectSame(const std::string& request, const std::string& reply) {
        for (const int type : {0, 1}) {
            const Recorded& direct = Last().direct[type];
            const Recorded& anys = Last().throughAnys[type];
            EXPECT_EQ(direct.text, anys.text) << type;
            EXPECT_EQ(direct.result, anys.result) << type;
        }
        EXPECT_EQ(Last().direct[0].text, request);
        EXPECT_EQ(Last().direct[1].text, reply);
    }

    TargetServant servant;
    Calls::Target_var target;

  private:
    PortableServer::ObjectId_var m_id;
};

/// What a call of `mixed` needs.
struct Mixed {
    Values::Point place;
    Values::Longs_var numbers;
    CORBA::Any detail;

    Mixed() {
        place.x = 1;
        place.label = CORBA::string_dup("before");
        detail <<= static_cast<CORBA::Long>(5);
    }
    void Call(Calls::Target_ptr target) { target->mixed("a", place, numbers.out(), detail); }
};

TEST_F(MarshalledValues, EveryModeAndAResult) {
    Mixed mixed;
    capture->SetVerbose(1);
    mixed.Call(target);
    ExpectSame(
        "ParaList = {\n--- Parameter No.1 = a\n--- Parameter No.2 = {x 1 label before}\n"
        "--- Parameter No.3 = 5\n } ",
        "ParaList = {\n--- Parameter No.1 = a\n--- Parameter No.2 = {x 2 label after}\n"
        "--- Parameter No.3 = {0 1 2}\n--- Parameter No.4 = 5\n } mixed @return: 77\n");
}

TEST_F(MarshalledValues, ATerseReplyLeavesOutWhatGoesOut) {
    Mixed mixed;
    capture->SetVerbose(0);
    mixed.Call(target);
    ExpectSame(
        "ParaList = {\n--- Parameter No.1 = a\n--- Parameter No.2 = {x 1 label before}\n"
        "--- Parameter No.3 = 5\n } ",
        "ParaList = {\n--- Parameter No.1 = a\n--- Parameter No.2 = {x 2 label after}\n"
        "--- Parameter No.3 = 5\n } mixed @return: 77\n");
}

TEST_F(MarshalledValues, OutsWithoutAResult) {
    for (const int verbose : {1, 0}) {
        capture->SetVerbose(verbose);
        CORBA::String_var text;
        CORBA::Any detail;
        detail <<= "before";
        Values::Octets_var octets;
        target->given(text.out(), detail, octets.out(), 9);
        const std::string request = "ParaList = {\n--- Parameter No.1 = before\n--- Parameter No.2 = 9\n } ";
        ExpectSame(request,
                   verbose
                       ? "ParaList = {\n--- Parameter No.1 = given\n--- Parameter No.2 = null\n"
                         "--- Parameter No.3 = {x y}\n--- Parameter No.4 = 9\n } ReplyStatus = SUCCESSFUL!\n"
                       : "ParaList = {\n--- Parameter No.1 = null\n--- Parameter No.2 = 9\n } "
                         "ReplyStatus = SUCCESSFUL!\n");
    }
}

TEST_F(MarshalledValues, AZeroOctetEndsTheBlockAndTheResultEachForItself) {
    servant.m_secondOctet = 0;
    capture->SetVerbose(1);
    CORBA::String_var text;
    CORBA::Any detail;
    detail <<= "before";
    Values::Octets_var octets;
    target->given(text.out(), detail, octets.out(), 9);
    EXPECT_EQ(Last().direct[1].text,
              "ParaList = {\n--- Parameter No.1 = given\n--- Parameter No.2 = null\n--- Parameter No.3 = {x "
              "ReplyStatus = SUCCESSFUL!\n");
    EXPECT_EQ(Last().direct[1].text, Last().throughAnys[1].text);
    octets = target->blob(3);
    ExpectSame("ParaList = {\n--- Parameter No.1 = 3\n } ",
               "ParaList = {\n--- Parameter No.1 = 3\n } blob @return: {");
}

TEST_F(MarshalledValues, ALargeResult) {
    const Values::Octets_var octets = target->blob(300000);
    EXPECT_EQ(Last().direct[1].text, Last().throughAnys[1].text);
    EXPECT_GT(Last().direct[1].text.size(), 600000u);
    EXPECT_EQ(Last().direct[1].text.substr(Last().direct[1].text.size() - 2), "}\n");
}

TEST_F(MarshalledValues, LargeTextsAndSequencesOfEverySizeModuloTheAlignment) {
    capture->SetVerbose(1);
    for (CORBA::ULong extra = 0; extra < 9; ++extra) {
        const std::string text(70000 + extra, 't');
        Calls::Flags flags;
        flags.length(66000 + extra);
        for (CORBA::ULong i = 0; i < flags.length(); ++i) {
            flags[i] = i % 3 == 0;
        }
        CORBA::String_var more;
        CORBA::Long behind = 0;
        const Calls::Flags_var back = target->large(text.c_str(), flags, more.out(), behind);
        EXPECT_EQ(Last().direct[0].text, Last().throughAnys[0].text) << extra;
        EXPECT_EQ(Last().direct[1].text, Last().throughAnys[1].text) << extra;
        EXPECT_EQ(Last().direct[1].result, 0);
        EXPECT_NE(
            Last().direct[1].text.find("t\n--- Parameter No.4 = 4711\n } large @return: {true false false "),
            std::string::npos);
    }
}

TEST_F(MarshalledValues, NothingAtAll) {
    target->nothing();
    ExpectSame("ParaList = {\n } ", "ParaList = {\n } ReplyStatus = SUCCESSFUL!\n");
}

TEST_F(MarshalledValues, SecretsAreMaskedWhereverTheyGo) {
    const CORBA::String_var answer = target->modifyPassword("oss1", "old secret", "new secret");
    const std::string block =
        "ParaList = {\n--- Parameter No.1 = oss1\n--- Parameter No.2 = ******\n--- Parameter No.3 = ******\n "
        "} ";
    ExpectSame(block, block + "modifyPassword @return: done\n");

    capture->SetVerbose(1);
    CORBA::String_var secret = CORBA::string_dup("old secret");
    CORBA::Long code = 0;
    target->planGateway(secret.inout(), code);
    ExpectSame("ParaList = {\n--- Parameter No.1 = ******\n } ",
               "ParaList = {\n--- Parameter No.1 = ******\n--- Parameter No.2 = 12\n } planGateway @return: "
               "true\n");

    Calls::NameValues pairs;
    pairs.length(2);
    pairs[0].name = CORBA::string_dup("USERNAME");
    pairs[0].value = CORBA::string_dup("oss1");
    pairs[1].name = CORBA::string_dup("USERPWD");
    pairs[1].value = CORBA::string_dup("secret");
    target->logOutSession(pairs);
    const std::string masked =
        "ParaList = {\n--- Parameter No.1 = {{name USERNAME value oss1} {name USERPWD value ******}}\n } ";
    ExpectSame(masked, masked + "ReplyStatus = SUCCESSFUL!\n");
}

TEST_F(MarshalledValues, AUnionWithoutAnActiveMemberMarksTheReply) {
    const Values::Maybe_var maybe = target->maybe(false);
    ExpectSame("ParaList = {\n--- Parameter No.1 = false\n } ",
               "ParaList = {\n--- Parameter No.1 = false\n } maybe @return: \n");
    EXPECT_EQ(Last().direct[1].result, -1);
}

TEST_F(MarshalledValues, ReferencesAndSilentKinds) {
    const Values::Thing_var thing = target->reference(Values::Thing::_nil());
    EXPECT_EQ(Last().direct[0].text, Last().throughAnys[0].text);
    EXPECT_EQ(Last().direct[1].text, Last().throughAnys[1].text);
    EXPECT_NE(Last().direct[1].text.find("reference @return: Object reference( IDL:Values/Thing:1.0 )IOR:"),
              std::string::npos);
    const std::unique_ptr<Values::Silent> silent(TargetServant::NewSilent());
    const Values::Silent_var back = target->silent(*silent);
    const std::string text =
        "{d null first 11 c null ll null ull null ld null ws null wc null amount null fee null type null "
        "last 12}";
    ExpectSame("ParaList = {\n--- Parameter No.1 = " + text + "\n } ",
               "ParaList = {\n--- Parameter No.1 = " + text + "\n } silent @return: " + text + "\n");
}

TEST_F(MarshalledValues, OnewaysAndAttributes) {
    Values::Rows rows;
    rows.length(2);
    target->hint(rows);
    ExpectSame("ParaList = {\n--- Parameter No.1 = {{} {}}\n } ",
               "ParaList = {\n--- Parameter No.1 = {{} {}}\n } ReplyStatus = SUCCESSFUL!\n");
    Values::Choice choice;
    choice.number(8);
    target->choice(choice);
    ExpectSame("ParaList = {\n--- Parameter No.1 = number 8\n } ",
               "ParaList = {\n--- Parameter No.1 = number 8\n } ReplyStatus = SUCCESSFUL!\n");
    const Values::Choice_var read = target->choice();
    ExpectSame("ParaList = {\n } ", "ParaList = {\n } _get_choice @return: number 8\n");
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    OrbWithInterceptor();
    return RUN_ALL_TESTS();
}
