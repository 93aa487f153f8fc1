// How many requests from outside an agent serves at once, as its settings say.
#include <atomic>
#include <chrono>

#include "agent/agentserver.h"
#include "gateS.h"
#include "tests/support/child_process.h"
#include "tests/support/free_port.h"
#include "tests/support/open_hooks.h"
#include "tests/support/wait_for.h"
#include "tests/unit/agent/agent_fixture.h"
#include "tests/unit/request/gate_servant.h"

namespace qv_test {
namespace {

/// Keeps each caller until as many are in it as are expected, and then for a moment, in which one too many
/// would come in.
class CrowdedServant : public GateServant {
  public:
    explicit CrowdedServant(int expected) : m_expected(expected) {}

    void ping() override {
        const int inside = ++m_inside;
        int most = m_most;
        while (inside > most && !m_most.compare_exchange_weak(most, inside)) {
        }
        WaitFor([&] { return m_most >= m_expected; });
        WaitFor([&] { return m_most > m_expected; }, std::chrono::milliseconds(200));
        --m_inside;
    }
    int most() const { return m_most; }

  private:
    const int m_expected;
    std::atomic<int> m_inside{0};
    std::atomic<int> m_most{0};
};

class ServantThreads : public AgentTest {
  protected:
    ServantThreads() {
        m_items.Set("CORBAAgent_Host", "127.0.0.1");
        m_items.Set("CORBAAgent_Port", std::to_string(FreePort()));
    }

    /// Lets two clients more than are expected in servants at once call an agent with these settings.
    void ExpectAtOnce(int expected) {
        const ScopedEnv root("QV_ENV_ROOT", m_dir.str());
        ASSERT_TRUE(config().Init("bundle"));
        OpenHooks hooks;
        config().SetReqInterceptorImpl(&hooks);
        CrowdedServant servant(expected);
        PortableServer::POA_var poa = config().GetRootPoa();
        const PortableServer::ObjectId_var id = poa->activate_object(&servant);
        const CORBA::Object_var object = poa->id_to_reference(id.in());
        const CORBA::ORB_var orb = config().GetOrb();
        const std::string ior = CORBA::String_var(orb->object_to_string(object.in())).in();
        ASSERT_EQ(0, NS_CORBA::AgentServer::Activate());
        std::vector<std::unique_ptr<ChildProcess>> clients;
        for (int i = 0; i < expected + 2; ++i) {
            clients.push_back(
                std::make_unique<ChildProcess>(std::vector<std::string>{GATE_PEER, "call", ior, "ping"}));
        }
        for (const auto& client : clients) {
            EXPECT_EQ(0, client->Wait()) << client->Err();
            EXPECT_EQ("done\n", client->Out());
        }
        EXPECT_EQ(expected, servant.most());
        poa->deactivate_object(id.in());
        orb->destroy();  // ahead of the servant
        config().SetReqInterceptorImpl(nullptr);
    }
};

TEST_F(ServantThreads, WithoutThePoolOneRequestIsServedAtOnce) {
    m_items.Set("ORBThreadPoolEnable", "0");
    ExpectAtOnce(1);
}

TEST_F(ServantThreads, WithThePoolAsManyAsItHasThreads) {
    m_items.Set("ORBThreadNum", "2");
    ExpectAtOnce(2);
}

TEST_F(ServantThreads, ZeroThreadsMeansFour) {
    m_items.Set("ORBThreadNum", "0");
    ExpectAtOnce(4);
}

}  // namespace
}  // namespace qv_test
