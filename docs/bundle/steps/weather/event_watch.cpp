#include "event_watch.h"

#include <orbsvcs/CosNotifyCommS.h>
#include <tao/PortableServer/PortableServer.h>

#include <atomic>
#include <iostream>

namespace {

/// Takes what the channel pushes, on a thread of the ORB.
class Printer : public POA_CosNotifyComm::StructuredPushConsumer {
  public:
    Printer(CORBA::ORB_ptr orb, unsigned long count) : orb_(CORBA::ORB::_duplicate(orb)), left_(count) {}

    void push_structured_event(const CosNotification::StructuredEvent& event) override {
        std::cout << event.header.fixed_header.event_type.type_name.in();
        for (CORBA::ULong i = 0; i < event.filterable_data.length(); ++i) {
            const char* text = "";
            event.filterable_data[i].value >>= text;
            std::cout << "  " << text;
        }
        std::cout << std::endl;
        if (--left_ == 0) {
            orb_->shutdown(false);
        }
    }
    void disconnect_structured_push_consumer() override {}
    void offer_change(const CosNotification::EventTypeSeq&, const CosNotification::EventTypeSeq&) override {}

  private:
    const CORBA::ORB_var orb_;
    std::atomic<unsigned long> left_;
};

}  // namespace

void WatchEvents(CORBA::ORB_ptr orb, CosNotifyChannelAdmin::EventChannel_ptr channel, unsigned long count) {
    using namespace CosNotifyChannelAdmin;
    const CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
    const PortableServer::POA_var root = PortableServer::POA::_narrow(object.in());
    const PortableServer::POAManager_var manager = root->the_POAManager();
    manager->activate();
    const PortableServer::ServantBase_var servant = new Printer(orb, count);
    const PortableServer::ObjectId_var id = root->activate_object(servant.in());
    const CORBA::Object_var printer = root->id_to_reference(id.in());
    const auto consumer = CosNotifyComm::StructuredPushConsumer::_narrow(printer.in());

    AdminID admin_id = 0;
    ProxyID proxy_id = 0;
    const ConsumerAdmin_var admin = channel->new_for_consumers(AND_OP, admin_id);
    const ProxySupplier_var any = admin->obtain_notification_push_supplier(STRUCTURED_EVENT, proxy_id);
    const auto proxy = StructuredProxyPushSupplier::_narrow(any.in());
    proxy->connect_structured_push_consumer(consumer);
    std::cout << "watching" << std::endl;
    orb->run();
}
