// The supplier of the benchmark of notification.
// Usage: bench_supplier make FACTORY            makes a channel and prints its reference
//        bench_supplier destroy CHANNEL         ends a channel
//        bench_supplier size                    prints how many octets the event has as CDR
//        bench_supplier push EVENTS RATE TARGET…
// Pushes EVENTS events, RATE a second or, with 0, as fast as it goes: into the channel whose reference is
// TARGET, or with several targets, or one that is a consumer, straight into each of them. Prints one line of
// JSON.
#include <orbsvcs/CosNotifyChannelAdminC.h>
#include <orbsvcs/CosNotifyCommC.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "bench/notification/bench_event.h"
#include "orb/event_octets.h"

namespace {

using Consumers = std::vector<CosNotifyComm::StructuredPushConsumer_var>;

int Make(CORBA::ORB_ptr orb, const char* factory_text) {
    const CORBA::Object_var object = orb->string_to_object(factory_text);
    const CosNotifyChannelAdmin::EventChannelFactory_var factory =
        CosNotifyChannelAdmin::EventChannelFactory::_narrow(object.in());
    CORBA::Long id = 0;
    const CosNotifyChannelAdmin::EventChannel_var channel =
        factory->create_channel(CosNotification::QoSProperties(), CosNotification::AdminProperties(), id);
    const CORBA::String_var text = orb->object_to_string(channel.in());
    std::printf("%s\n", text.in());
    return 0;
}

int Destroy(CORBA::ORB_ptr orb, const char* channel_text) {
    const CORBA::Object_var object = orb->string_to_object(channel_text);
    const CosNotifyChannelAdmin::EventChannel_var channel =
        CosNotifyChannelAdmin::EventChannel::_narrow(object.in());
    channel->destroy();
    std::printf("destroyed\n");
    return 0;
}

// A consumer as it stands, or the proxy of a channel for which it was asked.
CosNotifyComm::StructuredPushConsumer_ptr Target(CORBA::ORB_ptr orb, const char* text) {
    const CORBA::Object_var object = orb->string_to_object(text);
    const CosNotifyChannelAdmin::EventChannel_var channel =
        CosNotifyChannelAdmin::EventChannel::_narrow(object.in());
    if (CORBA::is_nil(channel.in())) {
        return CosNotifyComm::StructuredPushConsumer::_narrow(object.in());
    }
    const CosNotifyChannelAdmin::SupplierAdmin_var admin = channel->default_supplier_admin();
    CORBA::Long id = 0;
    const CosNotifyChannelAdmin::ProxyConsumer_var proxy =
        admin->obtain_notification_push_consumer(CosNotifyChannelAdmin::STRUCTURED_EVENT, id);
    CosNotifyChannelAdmin::StructuredProxyPushConsumer_var structured =
        CosNotifyChannelAdmin::StructuredProxyPushConsumer::_narrow(proxy.in());
    structured->connect_structured_push_supplier(CosNotifyComm::StructuredPushSupplier::_nil());
    return structured._retn();
}

void Print(std::uint64_t begin, std::uint64_t end, std::vector<std::uint64_t> times) {
    std::sort(times.begin(), times.end());
    const auto at = [&times](double share) {
        return static_cast<double>(
                   times[static_cast<std::size_t>(static_cast<double>(times.size() - 1) * share)]) /
               1000;
    };
    std::printf("{\"begin\": %llu, \"end\": %llu, \"p50_us\": %.1f, \"p99_us\": %.1f}\n",
                static_cast<unsigned long long>(begin), static_cast<unsigned long long>(end), at(0.50),
                at(0.99));
}

int Push(std::size_t events, std::uint64_t rate, const Consumers& targets) {
    CosNotification::StructuredEvent event = qv_bench::AlarmEvent();
    std::vector<std::uint64_t> times;
    times.reserve(events * targets.size());
    const std::uint64_t begin = qv_bench::Now();
    for (std::size_t i = 0; i < events; ++i) {
        if (rate != 0) {
            const std::uint64_t due = begin + i * 1000000000 / rate;
            if (const std::uint64_t now = qv_bench::Now(); now < due) {
                std::this_thread::sleep_for(std::chrono::nanoseconds(due - now));
            }
        }
        qv_bench::Stamp(event);
        for (const CosNotifyComm::StructuredPushConsumer_var& target : targets) {
            const std::uint64_t before = qv_bench::Now();
            target->push_structured_event(event);
            times.push_back(qv_bench::Now() - before);
        }
    }
    Print(begin, qv_bench::Now(), std::move(times));
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        int none = 0;
        char* no_arguments[] = {nullptr};
        const CORBA::ORB_var orb = CORBA::ORB_init(none, no_arguments);
        if (argc == 3 && std::strcmp(argv[1], "make") == 0) {
            return Make(orb.in(), argv[2]);
        }
        if (argc == 3 && std::strcmp(argv[1], "destroy") == 0) {
            return Destroy(orb.in(), argv[2]);
        }
        if (argc == 2 && std::strcmp(argv[1], "size") == 0) {
            std::printf("%zu\n", qv_orb::EventToOctets(qv_bench::AlarmEvent()).size());
            return 0;
        }
        if (argc >= 5 && std::strcmp(argv[1], "push") == 0) {
            Consumers targets;
            for (int i = 4; i < argc; ++i) {
                targets.push_back(Target(orb.in(), argv[i]));
            }
            return Push(std::strtoul(argv[2], nullptr, 10), std::strtoul(argv[3], nullptr, 10), targets);
        }
        std::fprintf(
            stderr,
            "usage: bench_supplier make FACTORY | destroy CHANNEL | size | push EVENTS RATE TARGET...\n");
        return 2;
    } catch (const CORBA::Exception& exception) {
        std::fprintf(stderr, "bench_supplier: %s\n", exception._name());
        return 1;
    }
}
