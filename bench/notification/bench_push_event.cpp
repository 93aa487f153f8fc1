// What the library adds to a push, how fast it empties its buffer, and what waits in it.
// Usage: bench_push_event push EVENTS | drain EVENTS | backlog EVENTS
// Needs QV_AGENT_CONFIG and the like, with "-nt FILE" in CORBAAgent_Option for the reference of the factory.
// "push" pushes EVENTS events by PushEvent and EVENTS straight into a proxy of its own, in turns of 100;
// "drain" buffers EVENTS events while the channel is out of service and then brings it into service. Both
// print one line of JSON. "backlog" reads numbers of events, up to EVENTS, from its standard input; for each
// it pushes while the channel is out of service until so many wait, and prints one line of JSON.
#include <orbsvcs/CosNotifyChannelAdminC.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

#include "agent/agentserver.h"
#include "agent/corbabaseagentconfig.h"
#include "bench/notification/bench_event.h"
#include "logging/logmgr.h"
#include "notification/supplier.h"

namespace {

using NS_CORBA::SuppilerMgr;

constexpr int kTurn = 100;
constexpr const char* kType = "NT_ATTRIBUTE_VALUE_CHANGE";

CosNotifyChannelAdmin::StructuredProxyPushConsumer_ptr OwnProxy() {
    const CosNotifyChannelAdmin::EventChannel_var channel = SuppilerMgr::Instance()->getChannel();
    const CosNotifyChannelAdmin::SupplierAdmin_var admin = channel->default_supplier_admin();
    CORBA::Long id = 0;
    const CosNotifyChannelAdmin::ProxyConsumer_var proxy =
        admin->obtain_notification_push_consumer(CosNotifyChannelAdmin::STRUCTURED_EVENT, id);
    CosNotifyChannelAdmin::StructuredProxyPushConsumer_var own =
        CosNotifyChannelAdmin::StructuredProxyPushConsumer::_narrow(proxy.in());
    own->connect_structured_push_supplier(CosNotifyComm::StructuredPushSupplier::_nil());
    return own._retn();
}

// Not an alarm: those have a text made by the bundle.
CosNotification::StructuredEvent OtherEvent() {
    CosNotification::StructuredEvent event = qv_bench::AlarmEvent();
    event.header.fixed_header.event_type.type_name = CORBA::string_dup(kType);
    return event;
}

template <class Push>
void TakeTimes(std::vector<std::uint64_t>& times, Push&& push) {
    for (int i = 0; i < kTurn; ++i) {
        const std::uint64_t before = qv_bench::Now();
        push();
        times.push_back(qv_bench::Now() - before);
    }
}

double MedianMicroseconds(std::vector<std::uint64_t> times) {
    std::sort(times.begin(), times.end());
    return static_cast<double>(times[times.size() / 2]) / 1000;
}

bool InService() {
    SuppilerMgr* const supplier = SuppilerMgr::Instance();
    return supplier->open(nullptr) >= 0 && supplier->NotifyServiceInit() == 0;
}

int Push(int events) {
    if (!InService()) {
        return 1;
    }
    const CosNotifyChannelAdmin::StructuredProxyPushConsumer_var raw = OwnProxy();
    CosNotification::StructuredEvent event = OtherEvent();
    std::vector<std::uint64_t> straight;
    std::vector<std::uint64_t> through_library;
    for (int turn = 0; turn < events / kTurn; ++turn) {
        TakeTimes(straight, [&] { raw->push_structured_event(event); });
        TakeTimes(through_library, [&] { SuppilerMgr::Instance()->PushEvent(event); });
    }
    std::printf("{\"raw_us\": %.2f, \"push_event_us\": %.2f}\n", MedianMicroseconds(straight),
                MedianMicroseconds(through_library));
    return 0;
}

int Backlog(int most) {
    SuppilerMgr::Instance()->regist(kType);
    int waiting = 0;
    std::vector<std::uint64_t> times;
    for (int wanted = 0; std::scanf("%d", &wanted) == 1 && wanted <= most;) {
        times.clear();
        for (; waiting < wanted; ++waiting) {
            // Made anew each time, as copies of an event share what its values lie in.
            CosNotification::StructuredEvent event = OtherEvent();
            const std::uint64_t before = qv_bench::Now();
            SuppilerMgr::Instance()->PushEvent(event);
            times.push_back(qv_bench::Now() - before);
        }
        std::printf("{\"push_us\": %.2f}\n", times.empty() ? 0.0 : MedianMicroseconds(times));
        std::fflush(stdout);
    }
    return 0;
}

int Drain(int events) {
    SuppilerMgr* const supplier = SuppilerMgr::Instance();
    CosNotification::StructuredEvent event = OtherEvent();
    supplier->regist(kType);
    for (int i = 0; i < events; ++i) {
        supplier->PushEvent(event);  // the channel is out of service
    }
    const std::uint64_t begin = qv_bench::Now();
    if (!InService()) {
        return 1;
    }
    while (!supplier->IsBufEmpty()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    const double seconds = static_cast<double>(qv_bench::Now() - begin) / 1e9;
    std::printf("{\"events\": %d, \"seconds\": %.3f}\n", events, seconds);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: bench_push_event push EVENTS | drain EVENTS | backlog EVENTS\n");
        return 2;
    }
    if (!NS_CORBA::CorbaBaseAgentConfig::Instance()->Init("bench_bundle")) {
        std::fprintf(stderr, "bench_push_event: the library could not be initialised\n");
        return 1;
    }
    NS_CORBA::CorbaLogMgr::Instance()->Init();
    NS_CORBA::AgentServer::Activate();
    const int events = std::atoi(argv[2]);
    const int result = std::strcmp(argv[1], "drain") == 0     ? Drain(events)
                       : std::strcmp(argv[1], "backlog") == 0 ? Backlog(events)
                                                              : Push(events);
    if (result != 0) {
        std::fprintf(stderr,
                     "bench_push_event: the channel does not come into service; see corbadebug.log\n");
    }
    std::fflush(stdout);
    std::_Exit(result);  // the supplier threads wait for their next turn
}
