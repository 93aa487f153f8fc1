#include <orbsvcs/CosNotifyChannelAdminS.h>

#include "tests/support/free_port.h"
#include "tests/unit/agent/agent_fixture.h"
#include "tests/unit/agent/naming_server.h"
#include "tests/unit/agent/plain_servant.h"

namespace qv_test {
namespace {

/// A channel factory that only needs to be found.
class ChannelFactory : public virtual POA_CosNotifyChannelAdmin::EventChannelFactory {
  public:
    CosNotifyChannelAdmin::EventChannel_ptr create_channel(const CosNotification::QoSProperties&,
                                                           const CosNotification::AdminProperties&,
                                                           CosNotifyChannelAdmin::ChannelID_out) override {
        throw CORBA::NO_IMPLEMENT();
    }
    CosNotifyChannelAdmin::ChannelIDSeq* get_all_channels() override { throw CORBA::NO_IMPLEMENT(); }
    CosNotifyChannelAdmin::EventChannel_ptr get_event_channel(CosNotifyChannelAdmin::ChannelID) override {
        throw CORBA::NO_IMPLEMENT();
    }
};

class NotifyFactory : public AgentTest {
  protected:
    NotifyFactory() {
        m_orb = MakeOrb();
        CORBA::Object_var object = m_orb->resolve_initial_references("RootPOA");
        m_poa = PortableServer::POA::_narrow(object.in());
        PortableServer::POAManager_var(m_poa->the_POAManager())->activate();
        Probe::NamingServiceHost() = "127.0.0.1";
        Probe::NamingServicePort() = static_cast<unsigned short>(FreePort());
    }

    CORBA::Object_var Serve(PortableServer::ServantBase* servant) {
        PortableServer::ServantBase_var owner(servant);
        PortableServer::ObjectId_var id = m_poa->activate_object(servant);
        return m_poa->id_to_reference(id.in());
    }

    void UseFile(const std::string& contents) {
        std::string option = "-nt" + m_dir.Write("nt.ior", contents);
        char* argv[] = {option.data(), nullptr};
        int argc = 1;
        config().parse_args(argc, argv);
    }

    std::string Ior(CORBA::Object_ptr object) {
        return CORBA::String_var(m_orb->object_to_string(object)).in();
    }

    CosNaming::Name FactoryName() {
        CosNaming::Name name;
        name.length(1);
        name[0].id = CORBA::string_dup("NotifyEventChannelFactory");
        return name;
    }

    CORBA::ORB_var m_orb;
    PortableServer::POA_var m_poa;
    CosNotifyChannelAdmin::EventChannelFactory_var m_found;
};

TEST_F(NotifyFactory, WithoutAnOrbThereIsNone) {
    config().SetOrb(CORBA::ORB::_nil());
    EXPECT_FALSE(config().GetNotifyFactory(m_found));
    ExpectLog(kSys, -1, "companion_services", "[CorbaBaseAgentConfig::GetNotifyFactory] ORB is nil!");
}

TEST_F(NotifyFactory, FileIsTheFirstChoice) {
    CORBA::Object_var factory = Serve(new ChannelFactory);
    UseFile(Ior(factory.in()));
    EXPECT_TRUE(config().GetNotifyFactory(m_found));
    EXPECT_TRUE(factory->_is_equivalent(m_found.in()));
    EXPECT_TRUE(m_log->Entries(kSys).empty());
}

TEST_F(NotifyFactory, NameIsTheSecondChoice) {
    const NamingServer server;
    Probe::NamingServicePort() = static_cast<unsigned short>(server.port());
    CORBA::Object_var factory = Serve(new ChannelFactory);
    ASSERT_TRUE(config().RegistName(FactoryName(), factory.in()));
    m_log->Clear();
    EXPECT_TRUE(config().GetNotifyFactory(m_found));
    EXPECT_TRUE(factory->_is_equivalent(m_found.in()));
    EXPECT_EQ(1, CountLog(kSys, "[CorbaBaseAgentConfig::GetNotifyFactory] Read_ior failed!"));
    ExpectLog(kSys, -1, "companion_services", "[CorbaBaseAgentConfig::GetNotifyFactory] Read_ior failed!");
}

TEST_F(NotifyFactory, NeitherFileNorNameFails) {
    EXPECT_FALSE(config().GetNotifyFactory(m_found));
    ExpectLog(kSys, -1, "companion_services", "[CorbaBaseAgentConfig::GetNotifyFactory] GetRef failed!");
}

TEST_F(NotifyFactory, ObjectOfAnotherKindGivesANilFactory) {
    UseFile(Ior(Serve(new PlainServant).in()));
    EXPECT_TRUE(config().GetNotifyFactory(m_found));
    EXPECT_TRUE(CORBA::is_nil(m_found.in()));
}

TEST_F(NotifyFactory, FactoryThatCannotBeAskedFails) {
    UseFile("corbaloc:iiop:127.0.0.1:" + std::to_string(FreePort()) + "/NotifyEventChannelFactory");
    EXPECT_FALSE(config().GetNotifyFactory(m_found));
    ExpectExceptionLog("companion_services",
                       "[CorbaBaseAgentConfig::GetNotifyFactory] Narrow object ref failed!");
}

}  // namespace
}  // namespace qv_test
