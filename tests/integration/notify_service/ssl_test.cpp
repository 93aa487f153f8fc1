// The notification service by SSL.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <orbsvcs/CosNamingC.h>
#include <signal.h>

#include "tests/integration/naming_service/naming_run.h"
#include "tests/integration/notify_service/channel_run.h"
#include "tests/support/certificates/test_authority.h"
#include "tests/support/free_port.h"

namespace {

using namespace qv_test;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// Certificates of all tests of this process, whose one ORB speaks SSL with one of them.
struct Certificates {
    Certificates() { ClientOrbOptions() = {"-ORBSvcConf", WriteProfile(dir, "client.conf", client)}; }

    TempDir dir;
    TestAuthority authority{dir, "authority"};
    IssuedFiles server = authority.Issue("server", "server-secret");
    IssuedFiles client = authority.Issue("client", "client-secret");
    std::string profile = WriteProfile(dir, "server.conf", server);
};

Certificates& certificates() {
    static Certificates made;
    return made;
}

class NotifySsl : public testing::Test {
  protected:
    static std::string NameServiceOf(const NamingRun& naming) {
        return "corbaloc:ssliop:127.0.0.1:" + std::to_string(naming.SslPort()) + "/NameService";
    }
    static CORBA::Object_var Resolve(const NamingRun& naming) {
        try {
            const CORBA::Object_var object = ClientOrb()->string_to_object(NameServiceOf(naming).c_str());
            const CosNaming::NamingContext_var root = CosNaming::NamingContext::_narrow(object.in());
            CosNaming::Name name;
            name.length(1);
            name[0].id = CORBA::string_dup("NotifyEventChannelFactory");
            return root->resolve(name);
        } catch (const CORBA::Exception&) {
            return CORBA::Object::_nil();
        }
    }
    /// What a start with this service configuration file says that fails.
    static RunResult RunWith(const std::string& profile, const std::vector<std::string>& options = {}) {
        const TempDir data;
        std::vector<std::string> command{
            QV_NOTIFY_SERVICE,
            "-ORBEndpoint",
            "iiop://127.0.0.1:" + std::to_string(FreePort()) + "/ssl_port=" + std::to_string(FreePort()),
            "-ORBSvcConf",
            profile,
            "-u",
            data.File("data")};
        command.insert(command.end(), options.begin(), options.end());
        return qv_test::Run(command);
    }

    Certificates& made = certificates();
};

TEST_F(NotifySsl, EventsGoThroughIt) {
    const NotifyServiceRun service({}, made.profile);
    const Channel channel(service);
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    PushFromTo(*supplier, 1, 50);
    EXPECT_TRUE(consumer->WaitForCount(50)) << service.Said();
    EXPECT_EQ(consumer->Numbers(), NumbersFromTo(1, 50));
    EXPECT_EQ(service.Said(), "");
}

TEST_F(NotifySsl, SaysWhereItServes) {
    NotifyServiceRun service({}, made.profile);
    EXPECT_THAT(service.Process().Out(),
                HasSubstr("serving corbaloc:ssliop:127.0.0.1:" + std::to_string(service.SslPort()) + "/"));
    EXPECT_EQ(service.Stop(), 0);
}

TEST_F(NotifySsl, NamesNoPortThatItDoesNotKnow) {
    ChildProcess service(
        {QV_NOTIFY_SERVICE, "-ORBEndpoint", "iiop://127.0.0.1:0/ssl_port=0", "-ORBSvcConf", made.profile});
    EXPECT_TRUE(
        service.WaitForOut("serving NotifyEventChannelFactory by SSL, at a port that the system "
                           "has chosen and only the reference tells\n"))
        << service.Out() << service.Err();
    service.Signal(SIGTERM);
    EXPECT_EQ(service.Wait(), 0);
}

TEST_F(NotifySsl, WhatIsKeptOutlivesARestart) {
    NotifyServiceRun service({}, made.profile);
    const Channel channel(service, true);
    const auto consumer = RecordingConsumer::Connect(channel.consumers.in());
    service.Kill();
    service.Start();
    // The connection to the one before is closed, which the next call finds out.
    ASSERT_TRUE(WaitFor([&] {
        try {
            return !channel.channel->_non_existent();
        } catch (const CORBA::SystemException&) {
            return false;
        }
    }));
    const auto supplier = RecordingSupplier::Connect(channel.suppliers.in());
    PushFromTo(*supplier, 1, 3);
    EXPECT_TRUE(consumer->WaitForCount(3)) << service.Said();
}

TEST_F(NotifySsl, TakesTheComposedCommandAndRegistersItself) {
    NamingRun naming;
    naming.UseSsl(made.profile);
    ASSERT_TRUE(naming.StartAndWait());
    const TempDir dir;
    ChildProcess service(
        {QV_NOTIFY_SERVICE, "-IORoutput", dir.File("nt.ior"), "-ORBInitRef",
         "NameService=" + NameServiceOf(naming), "-ORBEndpoint",
         "iiop://127.0.0.1:" + std::to_string(FreePort()) + "/ssl_port=" + std::to_string(FreePort()),
         "-ORBSvcConf", made.profile});
    EXPECT_TRUE(WaitFor([&] { return !CORBA::is_nil(Resolve(naming).in()); })) << service.Err();
    const auto factory =
        FactoryAt(ReadFile(dir.File("nt.ior")).substr(0, ReadFile(dir.File("nt.ior")).find('\n')));
    EXPECT_FALSE(CORBA::is_nil(factory.in()));
    service.Signal(SIGTERM);
    EXPECT_EQ(service.Wait(), 0);
    EXPECT_TRUE(CORBA::is_nil(Resolve(naming).in()));
    EXPECT_EQ(naming.Service().Err(), "") << "nothing came in clear";
}

TEST_F(NotifySsl, AWrongPassPhraseStopsTheStartInOneSentence) {
    qv_tools::ProfileOptions options = OptionsFor(made.server);
    options.pass_phrase = "wrong-secret";
    const RunResult result = RunWith(WriteProfile(made.dir, "wrong.conf", options));
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.err, AllOf(HasSubstr("Notify_Service: SSL can't be set up: the private key file " +
                                            made.server.key + " can't be used: the pass phrase of"),
                                  Not(HasSubstr("wrong-secret"))));
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_EQ(result.out, "");
}

TEST_F(NotifySsl, AnSslPortWithoutAProfileIsWrong) {
    const RunResult result =
        qv_test::Run({QV_NOTIFY_SERVICE, "-ORBEndpoint", "iiop://127.0.0.1:1/ssl_port=2"});
    EXPECT_EQ(result.code, 2);
    EXPECT_THAT(result.err, HasSubstr("no \"-ORBSvcConf FILE\" names the SSL options"));
    EXPECT_EQ(qv_test::Run({QV_NOTIFY_SERVICE, "-ORBEndpoint", "iiop://127.0.0.1:1/ssl_port=x"}).code, 2);
}

TEST_F(NotifySsl, TheCheckLooksAtSslToo) {
    const RunResult good = RunWith(made.profile, {"--check"});
    EXPECT_EQ(good.code, 0) << good.out;
    EXPECT_THAT(good.out,
                AllOf(HasSubstr("ok       SSL: 127.0.0.1:"), HasSubstr("requests in clear are refused")));
    const RunResult bad = RunWith(made.dir.File("none.conf"), {"--check"});
    EXPECT_EQ(bad.code, 1);
    EXPECT_THAT(bad.out, HasSubstr("problem  SSL: SSL can't be set up: the service configuration file " +
                                   made.dir.File("none.conf") + " can't be read"));
}

TEST_F(NotifySsl, APeerInClearIsRefusedAndNamed) {
    NotifyServiceRun service({}, made.profile);
    const RunResult result =
        qv_test::Run({QV_NAMECLT, "-ORBInitRef",
                      "NameService=corbaloc:iiop:127.0.0.1:" + std::to_string(service.Port()) +
                          "/NotifyEventChannelFactory",
                      "list"});
    EXPECT_THAT(result.out + result.err, HasSubstr("NO_PERMISSION"));
    EXPECT_TRUE(WaitForSaid(service, "sent a request in clear to the plain port, which was refused"));
}

}  // namespace
