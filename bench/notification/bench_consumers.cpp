// Consumers of the benchmark of notification, all in one process.
// Usage: bench_consumers COUNT EVENTS REFERENCE [hung]
// With COUNT 0 there is only the one that hangs.
// Connects COUNT consumers to the channel REFERENCE, or with REFERENCE "-" prints a reference for each, for
// whoever pushes straight into them; then "ready". When each has had EVENTS events it prints one line of JSON
// and starts anew, until it is ended.
#include <orbsvcs/CosNotifyChannelAdminC.h>
#include <orbsvcs/CosNotifyCommS.h>
#include <tao/PortableServer/PortableServer.h>

#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "bench/notification/bench_event.h"

namespace {

class Tally {
  public:
    explicit Tally(std::size_t wanted) : m_wanted(wanted) { m_latencies.reserve(wanted); }

    void Note(std::uint64_t latency) {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_latencies.push_back(latency);
        if (m_latencies.size() == m_wanted) {
            m_full.notify_one();
        }
    }

    void WaitAndPrint() {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_full.wait(lock, [this] { return m_latencies.size() >= m_wanted; });
        const std::uint64_t end = qv_bench::Now();
        std::sort(m_latencies.begin(), m_latencies.end());
        std::printf("{\"end\": %llu, \"p50_us\": %.1f, \"p99_us\": %.1f}\n",
                    static_cast<unsigned long long>(end), At(0.50), At(0.99));
        std::fflush(stdout);
        m_latencies.clear();
    }

  private:
    double At(double share) const {
        const auto last = static_cast<double>(m_latencies.size() - 1);
        return static_cast<double>(m_latencies[static_cast<std::size_t>(last * share)]) / 1000;
    }

    const std::size_t m_wanted;
    std::mutex m_mutex;
    std::condition_variable m_full;
    std::vector<std::uint64_t> m_latencies;
};

class Consumer : public POA_CosNotifyComm::StructuredPushConsumer {
  public:
    explicit Consumer(Tally& tally) : m_tally(tally) {}

    void push_structured_event(const CosNotification::StructuredEvent& notification) override {
        m_tally.Note(qv_bench::Now() - qv_bench::SentAt(notification));
    }
    void disconnect_structured_push_consumer() override {}
    void offer_change(const CosNotification::EventTypeSeq&, const CosNotification::EventTypeSeq&) override {}

  private:
    Tally& m_tally;
};

class HungConsumer : public POA_CosNotifyComm::StructuredPushConsumer {
  public:
    void push_structured_event(const CosNotification::StructuredEvent&) override {
        for (;;) {
            pause();
        }
    }
    void disconnect_structured_push_consumer() override {}
    void offer_change(const CosNotification::EventTypeSeq&, const CosNotification::EventTypeSeq&) override {}
};

void Connect(CosNotifyChannelAdmin::ConsumerAdmin_ptr admin,
             CosNotifyComm::StructuredPushConsumer_ptr consumer) {
    CORBA::Long id = 0;
    const CosNotifyChannelAdmin::ProxySupplier_var proxy =
        admin->obtain_notification_push_supplier(CosNotifyChannelAdmin::STRUCTURED_EVENT, id);
    const CosNotifyChannelAdmin::StructuredProxyPushSupplier_var structured =
        CosNotifyChannelAdmin::StructuredProxyPushSupplier::_narrow(proxy.in());
    structured->connect_structured_push_consumer(consumer);
}

int Run(std::size_t count, std::size_t events, const std::string& reference, bool hung) {
    int argc = 0;
    char* argv[] = {nullptr};
    const CORBA::ORB_var orb = CORBA::ORB_init(argc, argv);
    CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
    const PortableServer::POA_var root = PortableServer::POA::_narrow(object.in());
    const PortableServer::POAManager_var manager = root->the_POAManager();
    manager->activate();

    CosNotifyChannelAdmin::ConsumerAdmin_var admin;
    if (reference != "-") {
        object = orb->string_to_object(reference.c_str());
        const CosNotifyChannelAdmin::EventChannel_var channel =
            CosNotifyChannelAdmin::EventChannel::_narrow(object.in());
        admin = channel->default_consumer_admin();
    }
    Tally tally(count * events);
    for (std::size_t i = 0; i < count; ++i) {
        auto* const consumer = new Consumer(tally);
        const CosNotifyComm::StructuredPushConsumer_var self = consumer->_this();
        if (CORBA::is_nil(admin.in())) {
            const CORBA::String_var text = orb->object_to_string(self.in());
            std::printf("%s\n", text.in());
        } else {
            Connect(admin.in(), self.in());
        }
    }
    if (hung) {
        auto* const consumer = new HungConsumer;
        const CosNotifyComm::StructuredPushConsumer_var self = consumer->_this();
        Connect(admin.in(), self.in());
    }
    std::printf("ready\n");
    std::fflush(stdout);
    for (;;) {
        if (count > 0) {
            tally.WaitAndPrint();
        } else {
            pause();
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    const bool hung = argc == 5 && std::strcmp(argv[4], "hung") == 0;
    if (argc != 4 && !hung) {
        std::fprintf(stderr, "usage: bench_consumers COUNT EVENTS REFERENCE [hung]\n");
        return 2;
    }
    try {
        return Run(std::strtoul(argv[1], nullptr, 10), std::strtoul(argv[2], nullptr, 10), argv[3], hung);
    } catch (const CORBA::Exception& exception) {
        std::fprintf(stderr, "bench_consumers: %s\n", exception._name());
        return 1;
    }
}
