// A client that makes many channels of one notification service.
// Usage: bench_channels FACTORY EVENTS [persistent]
// Each line of the standard input names a number of channels; the program makes channels, each with one
// consumer, until there are so many, then pushes EVENTS events, one into each channel in turn, and prints one
// line of JSON when all have been received. It ends with its input.
#include <orbsvcs/CosNotifyChannelAdminC.h>
#include <orbsvcs/CosNotifyCommS.h>
#include <tao/PortableServer/PortableServer.h>

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <mutex>
#include <string>
#include <vector>

#include "bench/growth/timings.h"
#include "bench/notification/bench_event.h"

namespace {

namespace Admin = CosNotifyChannelAdmin;

constexpr int kPlainCalls = 200;

/// One servant for all channels: counts what it receives. Thread-safe.
class Consumer : public POA_CosNotifyComm::StructuredPushConsumer {
  public:
    void push_structured_event(const CosNotification::StructuredEvent&) override {
        const std::lock_guard<std::mutex> guard(m_mutex);
        ++m_received;
        m_changed.notify_one();
    }
    void disconnect_structured_push_consumer() override {}
    void offer_change(const CosNotification::EventTypeSeq&, const CosNotification::EventTypeSeq&) override {}

    void WaitFor(std::size_t events) {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [&] { return m_received >= events; });
        m_received = 0;
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::size_t m_received = 0;
};

class Channels {
  public:
    Channels(CORBA::ORB_ptr orb, const char* factory, bool persistent) {
        CORBA::Object_var object = orb->string_to_object(factory);
        m_factory = Admin::EventChannelFactory::_narrow(object.in());
        object = orb->resolve_initial_references("RootPOA");
        const PortableServer::POA_var root = PortableServer::POA::_narrow(object.in());
        const PortableServer::POAManager_var manager = root->the_POAManager();
        manager->activate();
        m_reference = m_consumer._this();
        if (persistent) {
            m_qos.length(1);
            m_qos[0].name = CosNotification::ConnectionReliability;
            m_qos[0].value <<= CosNotification::Persistent;
        }
    }

    void Measure(std::size_t count, std::size_t events) {
        qv_bench::Timings plain, create, connect;
        for (int i = 0; i < kPlainCalls; ++i) {
            plain.Take([&] { m_factory->_non_existent(); });
        }
        while (m_proxies.size() < count) {
            Admin::EventChannel_var channel;
            CORBA::Long id = 0;
            create.Take(
                [&] { channel = m_factory->create_channel(m_qos, CosNotification::AdminProperties(), id); });
            connect.Take([&] { Connect(channel.in()); });
        }
        const std::uint64_t begin = qv_bench::Now();
        for (std::size_t i = 0; i < events; ++i) {
            m_proxies[i % count]->push_structured_event(m_event);
        }
        m_consumer.WaitFor(events);
        const double seconds = static_cast<double>(qv_bench::Now() - begin) / 1e9;
        std::printf(
            "{\"create_us\": %.1f, \"create_p99_us\": %.1f, \"connect_us\": %.1f, "
            "\"plain_call_us\": %.1f, \"deliveries_per_second\": %.1f}\n",
            create.At(0.5), create.At(0.99), connect.At(0.5), plain.At(0.5),
            static_cast<double>(events) / seconds);
        std::fflush(stdout);
    }

  private:
    void Connect(Admin::EventChannel_ptr channel) {
        CORBA::Long id = 0;
        const Admin::ConsumerAdmin_var consumers = channel->default_consumer_admin();
        const Admin::ProxySupplier_var supplier =
            consumers->obtain_notification_push_supplier(Admin::STRUCTURED_EVENT, id);
        const Admin::StructuredProxyPushSupplier_var out =
            Admin::StructuredProxyPushSupplier::_narrow(supplier.in());
        out->connect_structured_push_consumer(m_reference.in());
        const Admin::SupplierAdmin_var suppliers = channel->default_supplier_admin();
        const Admin::ProxyConsumer_var consumer =
            suppliers->obtain_notification_push_consumer(Admin::STRUCTURED_EVENT, id);
        const Admin::StructuredProxyPushConsumer_var in =
            Admin::StructuredProxyPushConsumer::_narrow(consumer.in());
        in->connect_structured_push_supplier(CosNotifyComm::StructuredPushSupplier::_nil());
        m_proxies.push_back(in);
    }

    Admin::EventChannelFactory_var m_factory;
    Consumer m_consumer;
    CosNotifyComm::StructuredPushConsumer_var m_reference;
    CosNotification::QoSProperties m_qos;
    std::vector<Admin::StructuredProxyPushConsumer_var> m_proxies;
    const CosNotification::StructuredEvent m_event = qv_bench::AlarmEvent();
};

}  // namespace

int main(int argc, char** argv) {
    const bool persistent = argc == 4 && std::strcmp(argv[3], "persistent") == 0;
    if (argc != 3 && !persistent) {
        std::fprintf(stderr, "usage: bench_channels FACTORY EVENTS [persistent]\n");
        return 2;
    }
    try {
        int none = 0;
        char* no_arguments[] = {nullptr};
        const CORBA::ORB_var orb = CORBA::ORB_init(none, no_arguments);
        Channels channels(orb.in(), argv[1], persistent);
        for (std::string line; std::getline(std::cin, line);) {
            channels.Measure(std::strtoul(line.c_str(), nullptr, 10), std::strtoul(argv[2], nullptr, 10));
        }
        std::_Exit(0);  // the servant may still be called
    } catch (const CORBA::Exception& exception) {
        std::fprintf(stderr, "bench_channels: %s\n", exception._name());
        return 1;
    }
}
