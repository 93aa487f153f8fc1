// A consumer as a process of its own, so that tests can end it, by SIGKILL or orderly by SIGTERM: serves
// corbaloc:iiop:127.0.0.1:PORT/consumer and writes the number of each event.
#include <orbsvcs/CosNotifyCommS.h>
#include <signal.h>
#include <tao/PortableServer/PortableServer.h>

#include <cstdio>

#include "orb/object_access.h"

namespace {

class Consumer : public POA_CosNotifyComm::StructuredPushConsumer {
  public:
    void push_structured_event(const CosNotification::StructuredEvent& notification) override {
        CORBA::Long number = -1;
        notification.filterable_data[1].value >>= number;
        std::printf("event %d.\n", static_cast<int>(number));
        std::fflush(stdout);
    }
    void disconnect_structured_push_consumer() override {}
    void offer_change(const CosNotification::EventTypeSeq&, const CosNotification::EventTypeSeq&) override {}
};

}  // namespace

int main(int argc, char** argv) {
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &ending, nullptr);
    const CORBA::ORB_var orb = CORBA::ORB_init(argc, argv);
    const CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
    const PortableServer::POA_var root = PortableServer::POA::_narrow(object.in());
    const PortableServer::Servant_var<Consumer> consumer = new Consumer;
    const CORBA::Object_var reference = qv_orb::PublishUnderKey(orb.in(), "consumer", consumer.in());
    const PortableServer::POAManager_var manager = root->the_POAManager();
    manager->activate();
    std::puts("ready");
    std::fflush(stdout);
    int number = 0;
    sigwait(&ending, &number);
    orb->shutdown(true);
    orb->destroy();
    return 0;
}
