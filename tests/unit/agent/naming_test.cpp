#include <map>

#include "tests/unit/agent/fake_orb.h"
#include "tests/unit/agent/naming_fixture.h"
#include "tests/unit/agent/naming_server.h"

namespace qv_test {
namespace {

/// The same with a naming service there.
class LiveNaming : public Naming {
  protected:
    LiveNaming() { Probe::NamingServicePort() = static_cast<unsigned short>(m_server.port()); }

    CosNaming::NamingContext_var Root() {
        CosNaming::NamingContext_var root;
        EXPECT_TRUE(config().GetNamingService(root));
        return root;
    }

    bool IsBound(const Components& components) {
        try {
            CORBA::Object_var found = Root()->resolve(MakeName(components));
            return true;
        } catch (CosNaming::NamingContext::NotFound&) {
            return false;
        }
    }

    NamingServer m_server;
};

TEST_F(Naming, WithoutAnOrbThereIsNoNamingService) {
    config().SetOrb(CORBA::ORB::_nil());
    CosNaming::NamingContext_var context;
    EXPECT_FALSE(config().GetNamingService(context));
    ExpectLog(kSys, -1, "naming", "[CorbaBaseAgentConfig::GetNamingService] ORB is Nil!");
}

TEST_F(Naming, UnreachableServiceFailsWithoutAMessageOfItsOwn) {
    CosNaming::NamingContext_var context;
    EXPECT_FALSE(config().GetNamingService(context));
    EXPECT_TRUE(m_log->Entries(kSys).empty());
    CORBA::Object_var object = Reference("x");
    CORBA::Object_var found;
    EXPECT_FALSE(config().GetRef(MakeName({{"x", ""}}), found));
    EXPECT_FALSE(config().RegistName(MakeName({{"x", ""}}), object.in()));
    EXPECT_FALSE(config().UnRegistName(MakeName({{"x", ""}})));
    EXPECT_FALSE(config().UnRegistEMSFactoryName());
}

TEST_F(Naming, MissingFileOfTheServiceFails) {
    UseOption("-ns" + m_dir.File("none"));
    CosNaming::NamingContext_var context;
    EXPECT_FALSE(config().GetNamingService(context));
    ExpectLogPrefix(
        kSys, -1, "naming",
        "[CorbaBaseAgentConfig::GetNamingService] Error occured during getting namingservice object ref "
        "from file!",
        "GetNamingService] Error occured");
}

/// Notes the addresses that it is asked for; nothing is there.
class AddressOrb : public FakeOrb {
  public:
    CORBA::Object_ptr string_to_object(const char* address) override {
        addresses.emplace_back(address);
        return CORBA::Object::_nil();
    }

    std::vector<std::string> addresses;
};

TEST_F(Naming, TheServicesAddressFollowsTheMode) {
    Probe::NamingServiceHost() = "names";
    Probe::NamingServicePort() = 12001;
    Probe::NamingServiceSSLPort() = 22001;
    AddressOrb* orb = new AddressOrb;
    const CORBA::ORB_var owner(orb);
    config().SetOrb(orb);
    for (const unsigned int mode : {0u, 1u, 2u}) {
        Probe::SSLMode() = mode;
        CosNaming::NamingContext_var context;
        EXPECT_FALSE(config().GetNamingService(context)) << "mode " << mode;
    }
    EXPECT_EQ((std::vector<std::string>{"corbaloc:iiop:names:12001/NameService",
                                        "corbaloc:ssliop:names:22001/NameService",
                                        "corbaloc:ssliop:names:22001/NameService"}),
              orb->addresses);
}

TEST_F(Naming, NothingToRegister) {
    CORBA::Object_var object = Reference("x");
    EXPECT_FALSE(config().RegistName(CosNaming::Name(), object.in()));
    EXPECT_FALSE(config().RegistName(MakeName({{"x", ""}}), nullptr));
    EXPECT_FALSE(config().RegistName(MakeName({{"x", ""}}), CORBA::Object::_nil()));
}

TEST_F(Naming, FactoryNameHasFiveComponents) {
    CosNaming::Name name = MakeName({{"old", "old"}});
    config().ConstructEmsFactoryName(name);
    Components components;
    for (CORBA::ULong i = 0; i < name.length(); ++i) {
        components.emplace_back(name[i].id.in(), name[i].kind.in());
    }
    EXPECT_EQ(FactoryPath(), components);
    Probe::EmsName() = "Lab";
    Probe::IDLVersion() = "3.5";
    config().ConstructEmsFactoryName(name);
    EXPECT_STREQ("Lab", name[2].id.in());
    EXPECT_STREQ("3.5", name[3].id.in());
    EXPECT_STREQ("Lab", name[4].id.in());
}

TEST_F(Naming, AdditionalInfoNamesTheAgent) {
    Probe::EmsLocation() = "lab 4";
    Probe::CorbaAgentHost() = "agent";
    Probe::CorbaAgentPort() = 12003;
    Probe::CorbaAgentSSLPort() = 22003;
    for (const auto& [mode, expected] :
         std::map<unsigned int, std::string>{{0, "agent:12003"}, {1, "agent:22003"}, {2, "agent:12003"}}) {
        Probe::SSLMode() = mode;
        std::string location;
        std::string address;
        config().GetEmsAdditionalInfo(location, address);
        EXPECT_EQ("lab 4", location);
        EXPECT_EQ(expected, address) << "mode " << mode;
    }
}

TEST_F(LiveNaming, ServiceIsFoundByItsAddress) {
    CosNaming::NamingContext_var context;
    EXPECT_TRUE(config().GetNamingService(context));
    EXPECT_FALSE(CORBA::is_nil(context.in()));
}

TEST_F(LiveNaming, ServiceIsFoundByItsFile) {
    Probe::NamingServicePort() = 1;
    const std::string file = m_dir.Write("ns.ior", m_server.ior() + "\n");
    UseOption("-ns" + file);
    CosNaming::NamingContext_var context;
    EXPECT_TRUE(config().GetNamingService(context));
    ASSERT_FALSE(CORBA::is_nil(context.in()));
    EXPECT_TRUE(config().RegistName(MakeName({{"by-file", ""}}), Reference("x").in()));
}

TEST_F(LiveNaming, AnyModeBut0LooksForTheSslPort) {
    // The plain port serves, so it is the address of the SSL port that makes the difference.
    Probe::NamingServiceSSLPort() = static_cast<unsigned short>(FreePort());
    for (const unsigned int mode : {1u, 2u}) {
        Probe::SSLMode() = mode;
        CosNaming::NamingContext_var context;
        EXPECT_FALSE(config().GetNamingService(context)) << "mode " << mode;
    }
}

TEST_F(LiveNaming, NameOfOneComponentIsOnlyBound) {
    CORBA::Object_var object = Reference("one");
    EXPECT_TRUE(config().RegistName(MakeName({{"one", "kind"}}), object.in()));
    CORBA::Object_var found;
    EXPECT_TRUE(config().GetRef(MakeName({{"one", "kind"}}), found));
    EXPECT_TRUE(object->_is_equivalent(found.in()));

    CosNaming::BindingList_var bindings;
    CosNaming::BindingIterator_var rest;
    Root()->list(10, bindings, rest);
    ASSERT_EQ(1u, bindings->length());
    EXPECT_EQ(CosNaming::nobject, bindings[0].binding_type);
}

TEST_F(LiveNaming, FactoryIsRegisteredUnderItsWholePath) {
    CORBA::Object_var object = Reference("factory");
    EXPECT_TRUE(config().RegistEMSFactoryName(object.in()));
    CORBA::Object_var found;
    EXPECT_TRUE(config().GetRef(MakeName(FactoryPath()), found));
    EXPECT_TRUE(object->_is_equivalent(found.in()));
    for (std::size_t length = 1; length < FactoryPath().size(); ++length) {
        const Components path = FactoryPath();
        CORBA::Object_var context =
            Root()->resolve(MakeName(Components(path.begin(), path.begin() + static_cast<long>(length))));
        EXPECT_FALSE(
            CORBA::is_nil(CosNaming::NamingContext_var(CosNaming::NamingContext::_narrow(context.in())).in()))
            << length << " components";
    }
}

TEST_F(LiveNaming, SecondRegistrationReplacesTheFirst) {
    CORBA::Object_var first = Reference("first");
    CORBA::Object_var second = Reference("second");
    EXPECT_TRUE(config().RegistEMSFactoryName(first.in()));
    EXPECT_TRUE(config().RegistEMSFactoryName(second.in()));
    CORBA::Object_var found;
    EXPECT_TRUE(config().GetRef(MakeName(FactoryPath()), found));
    EXPECT_TRUE(second->_is_equivalent(found.in()));
    EXPECT_TRUE(m_log->Entries(kSys).empty()) << m_log->Entries(kSys).front().text;
}

TEST_F(LiveNaming, FactoryIsAlsoWrittenToTheFileOfTheOption) {
    const std::string file = m_dir.File("out.ior");
    UseOption("-out" + file);
    CORBA::Object_var object = Reference("factory");
    EXPECT_TRUE(config().RegistEMSFactoryName(object.in()));
    EXPECT_EQ(CORBA::String_var(m_orb->object_to_string(object.in())).in(), ReadFile(file));
}

TEST_F(LiveNaming, FileThatCannotBeWrittenDoesNotStopTheRegistration) {
    UseOption("-out" + m_dir.str());
    EXPECT_TRUE(config().RegistEMSFactoryName(Reference("factory").in()));
    EXPECT_TRUE(IsBound(FactoryPath()));
}

TEST_F(LiveNaming, UnregisteringTheFactoryUnbindsFiveTimes) {
    ASSERT_TRUE(config().RegistEMSFactoryName(Reference("factory").in()));
    EXPECT_TRUE(config().UnRegistEMSFactoryName());
    const Components path = FactoryPath();
    for (std::size_t length = path.size(); length > 0; --length) {
        EXPECT_FALSE(IsBound(Components(path.begin(), path.begin() + static_cast<long>(length)))) << length;
    }
}

TEST_F(LiveNaming, UnregisteringTakesContextsThatOthersHangUnder) {
    ASSERT_TRUE(config().RegistName(MakeName({{"a", ""}, {"mine", ""}}), Reference("mine").in()));
    ASSERT_TRUE(config().RegistName(MakeName({{"a", ""}, {"theirs", ""}}), Reference("theirs").in()));
    EXPECT_TRUE(config().UnRegistName(MakeName({{"a", ""}, {"mine", ""}})));
    EXPECT_FALSE(IsBound({{"a", ""}, {"theirs", ""}}));
}

TEST_F(LiveNaming, UnregisteringWhatIsNotThereFails) {
    EXPECT_FALSE(config().UnRegistName(MakeName({{"none", ""}})));
    ExpectLog(kSys, -1, "naming", "Unknown exception received during unbind name!\n");
}

TEST_F(LiveNaming, UnregisteringNothingSucceeds) {
    EXPECT_TRUE(config().UnRegistName(CosNaming::Name()));
}

TEST_F(LiveNaming, ResolvingReportsEachFailure) {
    ASSERT_TRUE(config().RegistName(MakeName({{"leaf", ""}}), Reference("leaf").in()));
    CORBA::Object_var found;
    EXPECT_FALSE(config().GetRef(MakeName({{"none", ""}}), found));
    ExpectLog(kSys, -1, "naming", "Exception CosNaming::NamingContext::NotFound received!\n");
    EXPECT_FALSE(config().GetRef(CosNaming::Name(), found));
    ExpectLog(kSys, -1, "naming", "Exception CosNaming::NamingContext::InvalidName received!\n");
}

TEST_F(LiveNaming, ServiceThatDiesIsNoticedByEachCall) {
    ASSERT_TRUE(config().RegistName(MakeName({{"x", ""}}), Reference("x").in()));
    m_server.Stop();
    CORBA::Object_var found;
    EXPECT_FALSE(config().GetRef(MakeName({{"x", ""}}), found));
    EXPECT_FALSE(config().RegistName(MakeName({{"x", ""}}), Reference("x").in()));
}

}  // namespace
}  // namespace qv_test
