// What an ORB initializer may do, what becomes of interceptors, and ORBs one after another (CORBA 3.0, 21.7).

#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "calls.h"
#include "orb/portability.h"
#include "seam_server.h"
#include "tests/support/child_process.h"
#include "tests/support/free_port.h"

namespace {

using namespace qv_test;
using PortableInterceptor::ORBInitInfo;
using PortableInterceptor::ORBInitInfo_ptr;
using PortableInterceptor::ServerRequestInterceptor_var;

Strings g_lines;

class OrbLifecycleTest : public ::testing::Test {
  protected:
    OrbLifecycleTest() {
        RegisterScriptedInitializer();
        initializer_script() = {};
        g_lines.clear();
        qv_orb::SetDiagnosticSink([](const std::string& line) { g_lines.push_back(line); });
    }
    ~OrbLifecycleTest() override {
        initializer_script() = {};
        qv_orb::SetDiagnosticSink(nullptr);
    }

    void Add(ORBInitInfo_ptr info, const std::string& name) {
        const ServerRequestInterceptor_var probe = new Probe(name, events);
        info->add_server_request_interceptor(probe.in());
    }
    /// That an ORB can be made, and that nothing of former ones is left when it is gone.
    void ExpectNextOrbWorks() {
        initializer_script() = {};
        const CORBA::ORB_var orb = InitOrb({});
        EXPECT_FALSE(CORBA::is_nil(CORBA::Object_var(orb->resolve_initial_references("RootPOA")).in()));
        orb->destroy();
        EXPECT_EQ(Probe::Alive(), 0);
    }

    Events events;
};

template <class Function>
std::string Outcome(Function function) {
    try {
        function();
        return "none";
    } catch (const CORBA::SystemException& ex) {
        return ex._name();
    } catch (const ORBInitInfo::DuplicateName& ex) {
        return std::string("DuplicateName ") + ex.name.in();
    } catch (const ORBInitInfo::InvalidName&) {
        return "InvalidName";
    }
}

TEST_F(OrbLifecycleTest, ANameIsTakenOnceAndNoNameAnyNumberOfTimes) {
    Strings outcomes;
    initializer_script().pre_init = [&](ORBInitInfo_ptr info) {
        for (const char* name : {"gate", "gate", "", ""}) {
            outcomes.push_back(Outcome([&] { Add(info, name); }));
        }
    };
    const CORBA::ORB_var orb = InitOrb({});
    EXPECT_EQ(outcomes, (Strings{"none", "DuplicateName gate", "none", "none"}));
    EXPECT_EQ(Probe::Alive(), 3);
    orb->destroy();
    EXPECT_EQ(events.All(), (Strings{"gate.destroy", ".destroy", ".destroy"}));
    EXPECT_EQ(Probe::Alive(), 0);
}

TEST_F(OrbLifecycleTest, InterceptorsOfBothPhasesAreDestroyedOnceEach) {
    initializer_script().pre_init = [&](ORBInitInfo_ptr info) { Add(info, "early"); };
    initializer_script().post_init = [&](ORBInitInfo_ptr info) { Add(info, "late"); };
    const CORBA::ORB_var orb = InitOrb({});
    orb->shutdown(true);
    EXPECT_EQ(events.All(), Strings{});
    orb->destroy();
    EXPECT_EQ(events.All(), (Strings{"early.destroy", "late.destroy"}));
    ExpectNextOrbWorks();
}

TEST_F(OrbLifecycleTest, ClientAndIorInterceptorsAreRefused) {
    Strings outcomes;
    initializer_script().pre_init = [&](ORBInitInfo_ptr info) {
        outcomes.push_back(Outcome([&] { info->add_client_request_interceptor(nullptr); }));
        outcomes.push_back(Outcome([&] { info->add_ior_interceptor(nullptr); }));
        outcomes.push_back(Outcome([&] { info->add_server_request_interceptor(nullptr); }));
    };
    const CORBA::ORB_var orb = InitOrb({});
    orb->destroy();
    EXPECT_EQ(outcomes, (Strings{"NO_IMPLEMENT", "NO_IMPLEMENT", "BAD_PARAM"}));
}

TEST_F(OrbLifecycleTest, TheInfoIsClosedAfterwards) {
    PortableInterceptor::ORBInitInfo_ptr kept = nullptr;
    initializer_script().post_init = [&](ORBInitInfo_ptr info) { kept = ORBInitInfo::_duplicate(info); };
    const CORBA::ORB_var orb = InitOrb({});
    EXPECT_EQ(Outcome([&] { Add(kept, "late"); }), "OBJECT_NOT_EXIST");
    EXPECT_EQ(Outcome([&] { kept->allocate_slot_id(); }), "OBJECT_NOT_EXIST");
    EXPECT_EQ(Outcome([&] { CORBA::String_var(kept->orb_id()); }), "OBJECT_NOT_EXIST");
    EXPECT_EQ(Outcome([&] { CORBA::Object_var(kept->resolve_initial_references("RootPOA")); }),
              "OBJECT_NOT_EXIST");
    CORBA::release(kept);
    orb->destroy();
}

TEST_F(OrbLifecycleTest, InitialReferencesAreRegisteredAndResolved) {
    Strings outcomes;
    const ServerRequestInterceptor_var object = new Probe("reference", events);
    initializer_script().pre_init = [&](ORBInitInfo_ptr info) {
        outcomes.push_back(Outcome([&] { CORBA::Object_var(info->resolve_initial_references("Ours")); }));
        outcomes.push_back(Outcome([&] { info->register_initial_reference("Ours", object.in()); }));
        outcomes.push_back(Outcome([&] { info->register_initial_reference("Ours", object.in()); }));
        outcomes.push_back(Outcome([&] { info->register_initial_reference("", object.in()); }));
        outcomes.push_back(Outcome([&] { info->register_initial_reference("Nil", CORBA::Object::_nil()); }));
    };
    initializer_script().post_init = [&](ORBInitInfo_ptr info) {
        const CORBA::Object_var early = info->resolve_initial_references("Ours");
        outcomes.emplace_back(early.in() == object.in() ? "same" : "other");
        outcomes.push_back(Outcome([&] { CORBA::Object_var(info->resolve_initial_references("Nobodys")); }));
        outcomes.push_back(Outcome([&] { info->register_initial_reference("Later", object.in()); }));
    };
    const CORBA::ORB_var orb = InitOrb({});
    EXPECT_EQ(outcomes, (Strings{"BAD_INV_ORDER", "none", "InvalidName", "InvalidName", "BAD_PARAM", "same",
                                 "InvalidName", "none"}));
    const CORBA::Object_var later = orb->resolve_initial_references("Later");
    EXPECT_EQ(later.in(), object.in());
    orb->destroy();
}

TEST_F(OrbLifecycleTest, ArgumentsAndIdAreKnown) {
    std::string id;
    Strings arguments;
    initializer_script().pre_init = [&](ORBInitInfo_ptr info) {
        id = CORBA::String_var(info->orb_id());
        const CORBA::StringSeq_var all = info->arguments();
        for (CORBA::ULong i = 0; i < all->length(); ++i) {
            arguments.emplace_back(all.in()[i]);
        }
    };
    const CORBA::ORB_var orb = InitOrb({"-ORBId", "of-options", "-x"}, nullptr, "of-call");
    orb->destroy();
    EXPECT_EQ(id, "of-call");
    EXPECT_EQ(arguments, (Strings{"test", "-ORBId", "of-options", "-x"}));
}

TEST_F(OrbLifecycleTest, AnInitializerThatRaisesLeavesNoOrb) {
    for (const bool early : {true, false}) {
        events.Clear();
        initializer_script().pre_init = [&](ORBInitInfo_ptr info) {
            Add(info, "gate");
            if (early) {
                throw CORBA::NO_RESOURCES(1, CORBA::COMPLETED_NO);
            }
        };
        initializer_script().post_init = [&](ORBInitInfo_ptr) {
            throw CORBA::NO_RESOURCES(1, CORBA::COMPLETED_NO);
        };
        EXPECT_THROW(InitOrb({}), CORBA::NO_RESOURCES);
        EXPECT_EQ(events.All(), Strings{"gate.destroy"});
        EXPECT_EQ(Probe::Alive(), 0);
        ExpectNextOrbWorks();
    }
}

TEST_F(OrbLifecycleTest, APortInUseIsToldWithTheRootPoa) {
    ChildProcess peer({PeerProgram(), "serve"});
    ASSERT_TRUE(peer.WaitForOut("\n"));
    const RunResult tool = qv_test::Run({"catior", peer.Out().substr(0, peer.Out().find('\n'))});
    const std::string host = "127.0.0.1 ";
    const std::string port = std::to_string(std::stoi(tool.out.substr(tool.out.find(host) + host.size())));
    initializer_script().pre_init = [&](ORBInitInfo_ptr info) { Add(info, "gate"); };
    const CORBA::ORB_var orb = InitOrb({"-ORBEndpoint", "iiop://127.0.0.1:" + port});
    EXPECT_EQ(Outcome([&] { CORBA::Object_var(orb->resolve_initial_references("RootPOA")); }), "INITIALIZE");
    orb->destroy();
    EXPECT_EQ(Probe::Alive(), 0);
    ExpectNextOrbWorks();
}

// A shutdown that does not wait leaves requests in servants; they end while the ORB is being destroyed.
TEST_F(OrbLifecycleTest, ARequestThatOutlastsTheShutdownEndsWithoutHarm) {
    for (const bool intercept : {true, false}) {
        SeamServer::Options options;
        options.intercept = intercept;
        options.servant_threads = 1;
        std::promise<void> inside;
        std::promise<void> go_on;
        std::unique_ptr<ChildProcess> client;
        bool ended = false;
        auto server = std::make_unique<SeamServer>(options);
        server->servant.on_call = [&](const std::string&) {
            inside.set_value();
            go_on.get_future().wait();
        };
        if (intercept) {
            server->a->reply = [&](Probe::Info) { ended = true; };
        }
        client = std::make_unique<ChildProcess>(Strings{PeerProgram(), "call", server->ior(), "title", ""});
        inside.get_future().wait();
        server->orb()->shutdown(false);
        std::thread later([&] {
            std::this_thread::sleep_for(
                std::chrono::milliseconds(100));  // gives destroy() the chance to be first
            go_on.set_value();
        });
        server.reset();
        later.join();
        EXPECT_EQ(ended, intercept);
        EXPECT_TRUE(client->Wait().has_value());
    }
    ExpectNextOrbWorks();
}

TEST_F(OrbLifecycleTest, FurtherCallsYieldTheSameOrb) {
    const CORBA::ORB_var first = InitOrb({"-ORBId", "one"});
    Strings rest;
    const CORBA::ORB_var second = InitOrb({"-ORBId", "two", "-own"}, &rest);
    EXPECT_EQ(first.in(), second.in());
    EXPECT_EQ(rest, Strings{"-own"});
    first->destroy();
    ExpectNextOrbWorks();
}

TEST_F(OrbLifecycleTest, UnknownOptionIsNamedAndRefused) {
    EXPECT_THROW(InitOrb({"-ORBNoSuchThing", "1"}), CORBA::BAD_PARAM);
    ASSERT_EQ(g_lines.size(), 1u);
    EXPECT_NE(g_lines[0].find("-ORBNoSuchThing"), std::string::npos) << g_lines[0];
    ExpectNextOrbWorks();
}

TEST_F(OrbLifecycleTest, OptionWithoutEffectIsReportedOnce) {
    for (int i = 0; i < 2; ++i) {
        const CORBA::ORB_var orb = InitOrb({"-ORBCollocation", "per-orb"});
        orb->destroy();
    }
    int lines = 0;
    for (const std::string& line : g_lines) {
        lines += line.find("-ORBCollocation per-orb") != std::string::npos ? 1 : 0;
    }
    EXPECT_EQ(lines, 1);
}

/// A POA whose references outlive the process.
PortableServer::POA_ptr PersistentPoa(SeamServer& server) {
    CORBA::PolicyList policies(2);
    policies.length(2);
    policies[0] = server.root()->create_lifespan_policy(PortableServer::PERSISTENT);
    policies[1] = server.root()->create_id_assignment_policy(PortableServer::USER_ID);
    const PortableServer::POAManager_var manager = server.root()->the_POAManager();
    return server.root()->create_POA("lasting", manager.in(), policies);
}

std::string PersistentIor(SeamServer& server) {
    const PortableServer::POA_var poa = PersistentPoa(server);
    const PortableServer::ObjectId_var id = PortableServer::string_to_ObjectId("factory");
    const CORBA::Object_var object = poa->create_reference_with_id(id.in(), "IDL:Seam/Target:1.0");
    return server.Ior(object.in());
}

TEST(ReferenceTest, IsReadByTheOrbsOwnTool) {
    SeamServer server;
    const RunResult result = qv_test::Run({"catior", server.ior()});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.out.find("\"IDL:Seam/Target:1.0\""), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("127.0.0.1 " + std::to_string(server.port())), std::string::npos) << result.out;
}

TEST(ReferenceTest, OfAPersistentPoaStaysTheSame) {
    SeamServer::Options options;
    options.port = FreePort();
    std::string first;
    {
        SeamServer server(options);
        first = PersistentIor(server);
    }
    SeamServer server(options);
    EXPECT_EQ(PersistentIor(server), first);
}

}  // namespace
