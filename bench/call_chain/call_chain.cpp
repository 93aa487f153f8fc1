// What the span of one request costs, request and reply together, in a call on a client's session as it comes
// from outside: the POA of the call is asked for, the environment is read, the span is built and handed over.

#include <benchmark/benchmark.h>

#include <string>

#include "agent/corbabaseagentconfig.h"
#include "call_chainS.h"
#include "logging/corba_talcom_log.h"
#include "platform/call_chain.h"
#include "request/te_user_helper.h"

namespace {

/// Takes spans and forgets them.
class Discard final : public xDENcommon::xDENCallChainInst {
  public:
    int SetCallChainInfo(const std::string& traceId, const std::string& parentId,
                         const std::string& spanId) override {
        m_trace = traceId;
        m_parent = parentId;
        m_span = spanId;
        return 0;
    }
    std::string GetTraceId() override { return m_trace; }
    std::string GetParentId() override { return m_parent; }
    std::string GetSpanId() override { return m_span; }
    int ReportSpan(const Json::Value& span, const Json::Value&) override {
        benchmark::DoNotOptimize(&span);
        return 0;
    }

  private:
    std::string m_trace, m_parent, m_span;
};

Discard g_discard;
xDENcommon::xDENCallChainInst* g_instance = nullptr;
unsigned long g_ids = 0;

void Caller(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(NS_CORBA::TEUserHelper::GetNmsIPAddrByContext());
    }
}

void Span(benchmark::State& state) {
    g_instance = &g_discard;
    for (auto _ : state) {
        NS_CORBA::SetOriginCallChain();
        benchmark::DoNotOptimize(NS_CORBA::MakeSpan("getAllManagedElementNames", "200"));
    }
    g_instance = nullptr;
}

void TracingOff(benchmark::State& state) {
    for (auto _ : state) {
        NS_CORBA::WriteCallChain(nullptr, 0);
        NS_CORBA::WriteCallChain(nullptr, 1);
    }
}

BENCHMARK(Caller);
BENCHMARK(Span);
BENCHMARK(TracingOff);

class Measuring : public POA_QvMeasured {
  public:
    void measure() override { benchmark::RunSpecifiedBenchmarks(); }
};

void MeasureInACall(CORBA::ORB_ptr orb) {
    NS_CORBA::CorbaBaseAgentConfig::Instance()->SetOrb(orb);
    const CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
    const PortableServer::POA_var root = PortableServer::POA::_narrow(object.in());
    const PortableServer::POAManager_var manager = root->the_POAManager();
    manager->activate();
    const CORBA::PolicyList none;
    const PortableServer::POA_var client = root->create_POA(
        "<USERNAME_TAG>oss</USERNAME_TAG><IPANDPORT_TAG>10.0.0.1:4711</IPANDPORT_TAG>", manager.in(), none);
    const PortableServer::POA_var session = client->create_POA("session", manager.in(), none);
    Measuring servant;
    const PortableServer::ObjectId_var id = session->activate_object(&servant);
    const CORBA::Object_var reference = session->id_to_reference(id.in());
    const QvMeasured_var measured = QvMeasured::_narrow(reference.in());
    measured->measure();
    session->deactivate_object(id.in());
}

}  // namespace

// The call chain library of this program: as fast as one can be, so that the library's own part shows.
xDENcommon::xDENCallChainInst* xDENcommon::xDENCallChainInstMgr::Instance(const std::string&) {
    return g_instance;
}

std::string xDENcommon::xDENCallChainHelper::GenerateCCUUID() {
    return "6ba7b810-9dad-11d1-80b4-" + std::to_string(100000000000 + ++g_ids);
}

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    CORBA::ORB_var orb = CORBA::ORB_init(argc, argv);
    MeasureInACall(orb.in());
    NS_CORBA::CorbaBaseAgentConfig::Destroy();
    orb->destroy();
    return 0;
}
