// The factory's name in a real naming service.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <orbsvcs/CosNamingC.h>

#include "tests/integration/naming_service/naming_run.h"
#include "tests/integration/notify_service/channel_run.h"

namespace {

using namespace qv_test;

std::string NameServiceAt(int port) {
    return "corbaloc:iiop:127.0.0.1:" + std::to_string(port) + "/NameService";
}

CosNaming::Name NameOf(const char* id) {
    CosNaming::Name name;
    name.length(1);
    name[0].id = CORBA::string_dup(id);
    name[0].kind = CORBA::string_dup("");
    return name;
}

/// What is bound under the name; nil when there is nothing.
CORBA::Object_var Resolve(const NamingRun& naming, const char* id) {
    try {
        const CORBA::Object_var object = ClientOrb()->string_to_object(NameServiceAt(naming.Port()).c_str());
        const CosNaming::NamingContext_var root = CosNaming::NamingContext::_narrow(object.in());
        return root->resolve(NameOf(id));
    } catch (const CORBA::Exception&) {
        return CORBA::Object::_nil();
    }
}

bool WaitForName(const NamingRun& naming, bool bound, const char* id = "NotifyEventChannelFactory") {
    return WaitFor([&] { return CORBA::is_nil(Resolve(naming, id).in()) != bound; });
}

std::vector<std::string> With(const NamingRun& naming) {
    return {"-ORBInitRef", "NameService=" + NameServiceAt(naming.Port())};
}

TEST(NotifyNaming, ClientsFindTheFactoryByItsName) {
    NamingRun naming;
    ASSERT_TRUE(naming.StartAndWait());
    NotifyServiceRun service(With(naming));
    ASSERT_TRUE(WaitForName(naming, true)) << service.Said();
    const auto factory =
        CosNotifyChannelAdmin::EventChannelFactory_var(CosNotifyChannelAdmin::EventChannelFactory::_narrow(
            Resolve(naming, "NotifyEventChannelFactory").in()));
    ASSERT_FALSE(CORBA::is_nil(factory.in()));
    const CosNotifyChannelAdmin::ChannelIDSeq_var channels = factory->get_all_channels();
    EXPECT_EQ(channels->length(), 0U);
    EXPECT_EQ(service.Stop(), 0);
    EXPECT_TRUE(WaitForName(naming, false)) << "the name ends with the service";
}

TEST(NotifyNaming, TheNamingServiceMayComeLater) {
    NamingRun naming;
    NotifyServiceRun service(With(naming));
    ASSERT_TRUE(WaitForSaid(service, "the naming service can't be reached")) << service.Said();
    ASSERT_TRUE(naming.StartAndWait());
    EXPECT_TRUE(WaitForName(naming, true)) << service.Said();
}

TEST(NotifyNaming, TheFactoryMayHaveAnotherNameOrNone) {
    NamingRun naming;
    ASSERT_TRUE(naming.StartAndWait());
    std::vector<std::string> options = With(naming);
    options.insert(options.end(), {"-Factory", "Events"});
    std::vector<std::string> silent = With(naming);
    silent.emplace_back("-NoNameSvc");
    const NotifyServiceRun unnamed(silent);
    ChildProcess named({QV_NOTIFY_SERVICE, "-ORBEndpoint", "iiop://127.0.0.1:0", options[0], options[1],
                        options[2], options[3]});
    EXPECT_TRUE(WaitForName(naming, true, "Events")) << named.Err();
    EXPECT_TRUE(CORBA::is_nil(Resolve(naming, "NotifyEventChannelFactory").in()));
}

TEST(NotifyNaming, ANameThatGotLostIsBoundAgain) {
    NamingRun naming;
    ASSERT_TRUE(naming.StartAndWait());
    NotifyServiceRun service(With(naming));
    ASSERT_TRUE(WaitForName(naming, true)) << service.Said();
    const CORBA::Object_var object = ClientOrb()->string_to_object(NameServiceAt(naming.Port()).c_str());
    const CosNaming::NamingContext_var root = CosNaming::NamingContext::_narrow(object.in());
    root->unbind(NameOf("NotifyEventChannelFactory"));
    EXPECT_TRUE(WaitForName(naming, true)) << service.Said();
}

}  // namespace
