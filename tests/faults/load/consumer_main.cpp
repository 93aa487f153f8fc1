// A consumer of the EMS's events whose reference stays the same over restarts: it subscribes once, and each
// process after the first one merely takes the events that come.
#include <orbsvcs/CosNotifyChannelAdminC.h>
#include <orbsvcs/CosNotifyCommS.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <thread>

#include "orb/object_access.h"
#include "tests/faults/load/ems_client.h"

namespace {

namespace Channels = CosNotifyChannelAdmin;
using qv_faults::Journal;

constexpr int kTries = 60;
constexpr std::chrono::milliseconds kPause{500};

struct Settings {
    std::string naming;
    std::string user;
    std::string password_file;
    std::string journal;
    bool resume = false;
};

struct Words {
    std::string id = "-";
    CORBA::ULong number = 0;
};

Words WordsOf(const CosNotification::StructuredEvent& event) {
    Words words;
    for (CORBA::ULong i = 0; i < event.filterable_data.length(); ++i) {
        const std::string name = event.filterable_data[i].name.in();
        const char* text = nullptr;
        if (name == "notificationId" && (event.filterable_data[i].value >>= text)) {
            words.id = text;
        } else if (name == "eventNumber") {
            event.filterable_data[i].value >>= words.number;
        }
    }
    return words;
}

/// Writes "event NUMBER ID TYPE" before the service has its answer: what it was answered for is written down.
class Consumer : public POA_CosNotifyComm::StructuredPushConsumer {
  public:
    explicit Consumer(const Journal& journal) : journal_(journal) {}

    void push_structured_event(const CosNotification::StructuredEvent& event) override {
        const Words words = WordsOf(event);
        journal_.Note("event " + std::to_string(words.number) + " " + words.id + " " +
                      event.header.fixed_header.event_type.type_name.in());
    }
    void disconnect_structured_push_consumer() override { journal_.Note("disconnected"); }
    void offer_change(const CosNotification::EventTypeSeq&, const CosNotification::EventTypeSeq&) override {}

  private:
    const Journal& journal_;
};

Channels::ProxyID Subscribe(const qv_faults::EmsClient& client, const Settings& settings,
                            CosNotifyComm::StructuredPushConsumer_ptr consumer) {
    const qv_faults::Passwords passwords = qv_faults::Passwords::Read(settings.password_file);
    const emsSession::EmsSession_I_var session = client.LogIn(settings.user, passwords.current);
    Channels::EventChannel_var channel;
    session->getEventChannel(channel.out());
    session->endSession();
    const Channels::ConsumerAdmin_var admin = channel->default_consumer_admin();
    Channels::ProxyID id = 0;
    const Channels::ProxySupplier_var proxy =
        admin->obtain_notification_push_supplier(Channels::STRUCTURED_EVENT, id);
    const auto structured =
        Channels::StructuredProxyPushSupplier_var(Channels::StructuredProxyPushSupplier::_narrow(proxy.in()));
    structured->connect_structured_push_consumer(consumer);
    return id;
}

void SubscribeOnce(const qv_faults::EmsClient& client, const Settings& settings, const Journal& journal,
                   CosNotifyComm::StructuredPushConsumer_ptr consumer) {
    for (int left = kTries; left > 0; --left) {
        try {
            const Channels::ProxyID id = Subscribe(client, settings, consumer);
            return journal.Note("subscribed " + std::to_string(id));
        } catch (const CORBA::Exception& exception) {
            std::fprintf(stderr, "not subscribed yet: %s\n", qv_faults::OutcomeOf(exception).c_str());
        }
        std::this_thread::sleep_for(kPause);
    }
    throw std::runtime_error("the subscription did not come about");
}

}  // namespace

int main(int argc, char** argv) try {
    const CORBA::ORB_var orb = qv_faults::StartOrb(argc, argv);
    Settings settings;
    CLI::App app{"A consumer of the fault campaign. -ORBEndpoint iiop://HOST:PORT says where it listens."};
    app.add_option("--naming", settings.naming, "Naming service as HOST:PORT")->required();
    app.add_option("--user", settings.user, "User to log in as")->required();
    app.add_option("--password-file", settings.password_file, "File with the user's two passwords")
        ->required();
    app.add_option("--journal", settings.journal, "File that takes a line for each event")->required();
    app.add_flag("--resume", settings.resume, "The subscription of an earlier process stands");
    CLI11_PARSE(app, argc, argv);
    const Journal journal(settings.journal);
    const PortableServer::Servant_var<Consumer> servant = new Consumer(journal);
    const CORBA::Object_var object = qv_orb::PublishUnderKey(orb.in(), "consumer", servant.in());
    if (settings.resume) {
        journal.Note("resumed");
    } else {
        const qv_faults::EmsClient client(orb.in(), settings.naming, journal);
        const CosNotifyComm::StructuredPushConsumer_var consumer =
            CosNotifyComm::StructuredPushConsumer::_unchecked_narrow(object.in());
        SubscribeOnce(client, settings, journal, consumer.in());
    }
    orb->run();
    return 0;
} catch (const CORBA::Exception& exception) {
    std::fprintf(stderr, "qv_fault_consumer: %s\n", exception._name());
    return 1;
} catch (const std::exception& exception) {
    std::fprintf(stderr, "qv_fault_consumer: %s\n", exception.what());
    return 1;
}
