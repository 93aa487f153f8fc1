// bundle FILE: an agent by the library's own means. It serves one object, whose reference it writes to FILE,
// counts its requests in an interceptor, and ends when the object's client takes leave.
#include <agent/agentserver.h>
#include <agent/corbabaseagentconfig.h>
#include <agent/persistent_poa.h>
#include <logging/logmgr.h>
#include <orbsvcs/CosEventCommS.h>
#include <request/request_interceptor_base.h>

#include <atomic>
#include <cstdlib>
#include <future>
#include <iostream>
#include <thread>

namespace {

class Gate : public NS_CORBA::RequestInterceptorBase {
  public:
    void BeforeReceiveRequest(PortableInterceptor::ServerRequestInfo*) override { ++requests; }
    void AfterReceiveRequest(PortableInterceptor::ServerRequestInfo*) override {}

    std::atomic<int> requests{0};
};

class Listener : public POA_CosEventComm::PushConsumer {
  public:
    explicit Listener(std::promise<std::string>& last) : m_last(last) {}

    void push(const CORBA::Any& data) override {
        const char* text = nullptr;
        if (data >>= text) {
            m_heard = text;
        }
    }
    void disconnect_push_consumer() override { m_last.set_value(m_heard); }

  private:
    std::promise<std::string>& m_last;
    std::string m_heard;
};

}  // namespace

int main(int argc, char** argv) {
    NS_CORBA::CorbaBaseAgentConfig& config = *NS_CORBA::CorbaBaseAgentConfig::Instance();
    if (argc != 2 || !config.Init("bundle") || !NS_CORBA::CorbaLogMgr::Instance()->Init()) {
        std::cerr << "bundle: can't start\n";
        return 1;
    }
    std::promise<std::string> last;
    Gate gate;
    config.SetReqInterceptorImpl(&gate);
    const PortableServer::POA_var root = config.GetRootPoa();
    const PortableServer::POA_var top = NS_CORBA::get_persistent_poa(root.in(), "bundle");
    const PortableServer::ServantBase_var servant = new Listener(last);
    const CORBA::Object_var object = NS_CORBA::get_persistent_ref(top.in(), servant.in(), "listener");
    NS_CORBA::AgentServer::Activate();
    std::thread server([] { NS_CORBA::AgentServer::Run(); });
    if (config.Write_ior(argv[1], object.in()) != 0) {
        return 1;
    }
    const std::string heard = last.get_future().get();
    NS_CORBA::AgentServer::Discard();
    std::cout << "heard " << heard << " in " << gate.requests << " requests" << std::endl;
    std::quick_exit(0);  // threads of the ORB still run
}
