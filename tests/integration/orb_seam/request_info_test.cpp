// The attributes of ServerRequestInfo: when each may be asked (CORBA 3.0, table 21-2) and what it says of the
// request's target, names and peer.

#include <map>
#include <set>
#include <utility>

#include "both_sides.h"
#include "calls.h"
#include "orb/portability.h"

namespace {

using namespace qv_test;
using Info = Probe::Info;

constexpr CORBA::ULong kWrongPoint = 0x4f4d000e;

struct Attribute {
    const char* name;
    const char* valid;  // at contexts, request, reply, exception, other: one letter each, '-' where it is not
    std::function<void(Info)> ask;
};

template <class T>
void Release(T* owned) {
    const std::unique_ptr<T> released(owned);
}
void Release(char* text) {
    CORBA::string_free(text);
}

const std::vector<Attribute>& Attributes() {
    static const std::vector<Attribute> attributes = {
        {"request_id", "crtxo", [](Info info) { info->request_id(); }},
        {"operation", "crtxo", [](Info info) { Release(info->operation()); }},
        {"arguments", "-rt--", [](Info info) { Release(info->arguments()); }},
        {"exceptions", "-rtxo", [](Info info) { Release(info->exceptions()); }},
        {"contexts", "-rtxo", [](Info info) { Release(info->contexts()); }},
        {"operation_context", "-rt--", [](Info info) { Release(info->operation_context()); }},
        {"result", "--t--", [](Info info) { Release(info->result()); }},
        {"response_expected", "crtxo", [](Info info) { info->response_expected(); }},
        {"sync_scope", "crtxo", [](Info info) { info->sync_scope(); }},
        {"reply_status", "--txo", [](Info info) { info->reply_status(); }},
        {"forward_reference", "----o", [](Info info) { CORBA::Object_var(info->forward_reference()); }},
        {"get_slot", "crtxo", [](Info info) { Release(info->get_slot(0)); }},
        {"get_request_service_context", "crtxo",
         [](Info info) { Release(info->get_request_service_context(0x7777)); }},
        {"get_reply_service_context", "--txo",
         [](Info info) { Release(info->get_reply_service_context(0x7777)); }},
        {"sending_exception", "---x-", [](Info info) { Release(info->sending_exception()); }},
        {"object_id", "-rtxo", [](Info info) { Release(info->object_id()); }},
        {"adapter_id", "-rtxo", [](Info info) { Release(info->adapter_id()); }},
        {"server_id", "-rtxo", [](Info info) { Release(info->server_id()); }},
        {"orb_id", "-rtxo", [](Info info) { Release(info->orb_id()); }},
        {"adapter_name", "-rtxo", [](Info info) { Release(info->adapter_name()); }},
        {"target_most_derived_interface", "-r---",
         [](Info info) { Release(info->target_most_derived_interface()); }},
        {"get_server_policy", "crtxo", [](Info info) { CORBA::Policy_var(info->get_server_policy(16)); }},
        {"set_slot", "crtxo", [](Info info) { info->set_slot(0, CORBA::Any()); }},
        {"target_is_a", "-r---", [](Info info) { info->target_is_a("IDL:Seam/Base:1.0"); }},
        {"add_reply_service_context", "crtxo",
         [](Info info) { info->add_reply_service_context(IOP::ServiceContext(), true); }},
    };
    return attributes;
}

/// "valid", "not here", or the exception that says why there is no answer.
std::string Ask(const Attribute& attribute, Info info) {
    try {
        attribute.ask(info);
        return "valid";
    } catch (const CORBA::BAD_INV_ORDER& ex) {
        return ex.minor() == kWrongPoint ? "not here" : Describe(ex);
    } catch (const CORBA::SystemException& ex) {
        return Describe(ex);
    }
}

/// What an attribute answers where the table allows to ask.
std::string AnswerWhereValid(const std::string& name) {
    static const std::map<std::string, std::string> others = {
        {"contexts", "NO_RESOURCES 0x4f4d0001 NO"},
        {"operation_context", "NO_RESOURCES 0x4f4d0001 NO"},
        {"get_server_policy", "INV_POLICY 0x4f4d0003 NO"},
        {"get_request_service_context", "BAD_PARAM 0x4f4d001a NO"},
        {"get_reply_service_context", "BAD_PARAM 0x4f4d001a NO"},
    };
    const auto found = others.find(name);
    return found == others.end() ? "valid" : found->second;
}

SeamServer::Options WithSlot() {
    SeamServer::Options options;
    options.slots = 1;
    return options;
}

class RequestInfoTest : public BothSidesTest {
  protected:
    RequestInfoTest() : BothSidesTest(WithSlot()) {}
};

INSTANTIATE_TEST_SUITE_P(From, RequestInfoTest, ::testing::Values(true, false), SideName);

TEST_P(RequestInfoTest, EachAttributeIsValidWhereTheTableSaysSo) {
    std::map<std::string, std::map<char, std::string>> answers;
    const auto asking = [&](char point) {
        return [&answers, point](Info info) {
            for (const Attribute& attribute : Attributes()) {
                answers[attribute.name][point] = Ask(attribute, info);
            }
        };
    };
    server.b->contexts = asking('c');
    server.b->request = asking('r');
    server.b->reply = asking('t');
    server.b->exception = asking('x');
    server.b->other = asking('o');
    EXPECT_EQ(Call("echo", "hello"), "hello");
    EXPECT_EQ(Call("fail", "refused"), "Refused as asked 5");
    bool forwarded = false;
    server.servant.on_call = [&](const std::string&) { throw CORBA::TRANSIENT(1, CORBA::COMPLETED_NO); };
    server.a->request = [&](Info) {
        if (!std::exchange(forwarded, true)) {
            throw PortableInterceptor::ForwardRequest(server.there.in());
        }
    };
    EXPECT_EQ(Call("title"), "elsewhere");

    for (const Attribute& attribute : Attributes()) {
        const std::string points = "crtxo";
        for (std::size_t i = 0; i < points.size(); ++i) {
            const std::string expected =
                attribute.valid[i] == '-' ? "not here" : AnswerWhereValid(attribute.name);
            EXPECT_EQ(answers[attribute.name][points[i]], expected) << attribute.name << " at " << points[i];
        }
    }
}

class RequestTargetTest : public RequestInfoTest {};

INSTANTIATE_TEST_SUITE_P(From, RequestTargetTest, ::testing::Values(true, false), SideName);

std::string Joined(const CORBA::StringSeq& names) {
    std::string all;
    for (CORBA::ULong i = 0; i < names.length(); ++i) {
        all.append(i == 0 ? "" : "/").append(names[i]);
    }
    return all;
}

std::string Bytes(const CORBA::OctetSeq& octets) {
    return std::string(reinterpret_cast<const char*>(octets.get_buffer()), octets.length());
}

TEST_P(RequestTargetTest, AdapterAndObjectAreNamed) {
    const CORBA::PolicyList no_policies;
    const PortableServer::POAManager_var manager = server.root()->the_POAManager();
    const PortableServer::POA_var child = server.root()->create_POA("child", manager.in(), no_policies);
    const PortableServer::POA_var grandchild = child->create_POA("grand child", manager.in(), no_policies);

    std::map<std::string, std::string> adapters;  // path to adapter id
    std::string object_id;
    server.a->request = [&](Info info) {
        adapters[Joined(CORBA::StringSeq_var(info->adapter_name()).in())] =
            Bytes(CORBA::OctetSeq_var(info->adapter_id()).in());
        object_id = Bytes(CORBA::OctetSeq_var(info->object_id()).in());
    };
    for (PortableServer::POA_ptr poa : {server.root(), child.in(), grandchild.in()}) {
        TargetServant servant;
        PortableServer::ObjectId_var id = poa->activate_object(&servant);
        const CORBA::Object_var object = poa->id_to_reference(id.in());
        server.target = Seam::Target::_unchecked_narrow(object.in());
        Call("title");
        EXPECT_EQ(object_id, std::string(reinterpret_cast<const char*>(id->get_buffer()), id->length()));
        poa->deactivate_object(id.in());
    }
    ASSERT_EQ(adapters.size(), 3u);
    EXPECT_EQ(adapters.count("RootPOA"), 1u);
    EXPECT_EQ(adapters.count("RootPOA/child"), 1u);
    EXPECT_EQ(adapters.count("RootPOA/child/grand child"), 1u);
    std::set<std::string> ids;
    for (const auto& [path, id] : adapters) {
        ids.insert(id);
    }
    EXPECT_EQ(ids.size(), 3u);
}

TEST_P(RequestTargetTest, InterfaceOfTheTargetIsKnown) {
    std::string interface;
    Strings is_a;
    server.a->request = [&](Info info) {
        interface = CORBA::String_var(info->target_most_derived_interface());
        for (const char* id : {"IDL:Seam/Target:1.0", "IDL:Seam/Base:1.0", "IDL:omg.org/CORBA/Object:1.0",
                               "IDL:Seam/Stranger:1.0"}) {
            is_a.emplace_back(info->target_is_a(id) ? "yes" : "no");
        }
    };
    Call("title");
    EXPECT_EQ(interface, "IDL:Seam/Target:1.0");
    EXPECT_EQ(is_a, (Strings{"yes", "yes", "yes", "no"}));
}

TEST_P(RequestTargetTest, RequestIdStaysTheSameWithinARequestAndDiffersBetweenThem) {
    std::vector<CORBA::ULong> ids;
    const auto note = [&](Info info) { ids.push_back(info->request_id()); };
    server.a->contexts = server.a->request = server.a->reply = note;
    Call("inherited", "first");
    ASSERT_EQ(ids.size(), 3u);
    EXPECT_EQ(ids[0], ids[1]);
    EXPECT_EQ(ids[0], ids[2]);
    if (!IsRemote()) {  // another process starts with the same number again
        Call("inherited", "second");
        EXPECT_NE(ids.at(3), ids[0]);
    }
}

TEST_P(RequestTargetTest, SlotNumberThatWasNotAllocatedIsInvalid) {
    int invalid = 0;
    server.a->request = [&](Info info) {
        try {
            info->get_slot(1);
        } catch (const PortableInterceptor::InvalidSlot&) {
            ++invalid;
        }
        try {
            info->set_slot(1, CORBA::Any());
        } catch (const PortableInterceptor::InvalidSlot&) {
            ++invalid;
        }
    };
    Call("title");
    EXPECT_EQ(invalid, 2);
}

TEST(RequestServerTest, NamesOfOrbAndServerAreThoseOfTheOptions) {
    SeamServer::Options options;
    options.args = {"-ORBId", "orb-of-test", "-ORBServerId", "server-of-test"};
    SeamServer server(options);
    std::string names;
    server.a->request = [&](Info info) {
        names = std::string(CORBA::String_var(info->orb_id())) + " " +
                std::string(CORBA::String_var(info->server_id()));
    };
    server.Collocated("title");
    EXPECT_EQ(names, "orb-of-test server-of-test");
}

TEST(RequestPeerTest, AddressOfTheCallerIsKnownForRemoteCallsOnly) {
    SeamServer server;
    std::vector<std::string> peers;
    server.a->contexts = server.b->reply = [&](Info info) { peers.push_back(qv_orb::PeerAddress(info)); };
    server.Remote("title");
    ASSERT_EQ(peers.size(), 2u);
    EXPECT_EQ(peers[0].substr(0, 10), "127.0.0.1:");
    EXPECT_GT(std::stoi(peers[0].substr(10)), 0);
    EXPECT_EQ(peers[1], peers[0]);
    peers.clear();
    server.Collocated("title");
    EXPECT_EQ(peers, (Strings{"", ""}));
}

TEST(RequestPeerTest, ACollocatedCallWithinARemoteOneHasNoPeer) {
    SeamServer server;
    std::map<std::string, std::string> peers;
    server.a->request = [&](Info info) {
        peers[std::string(CORBA::String_var(info->operation()))] = qv_orb::PeerAddress(info);
    };
    server.servant.on_call = [&](const std::string& operation) {
        if (operation == "inherited") {
            server.Collocated("title");
        }
    };
    server.Remote("inherited");
    EXPECT_NE(peers["inherited"], "");
    EXPECT_EQ(peers["_get_title"], "");
}

}  // namespace
