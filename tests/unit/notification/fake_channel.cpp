#include "tests/unit/notification/fake_channel.h"

#include <atomic>
#include <fstream>

#include "tests/unit/notification/fake_servants.h"

namespace qv_test {

namespace {

using namespace CosNotifyChannelAdmin;

PortableServer::POA_ptr MakePoa(CORBA::ORB_ptr orb) {
    static std::atomic<int> s_number{0};
    const CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
    const PortableServer::POA_var root = PortableServer::POA::_narrow(object.in());
    const PortableServer::POAManager_var manager = root->the_POAManager();
    manager->activate();
    const std::string name = "fake-notification-" + std::to_string(++s_number);
    return root->create_POA(name.c_str(), manager.in(), CORBA::PolicyList());
}

}  // namespace

FakeNotifyService::FakeNotifyService(CORBA::ORB_ptr orb)
    : m_orb(CORBA::ORB::_duplicate(orb)), m_poa(MakePoa(orb)), m_state(std::make_shared<FakeNotifyState>()) {
    m_state->poa = PortableServer::POA::_duplicate(m_poa.in());
    m_state->MakeFactory();
}

FakeNotifyService::~FakeNotifyService() {
    m_state->script.ReleaseAll();
    try {
        m_poa->destroy(true, true);
    } catch (const CORBA::Exception&) {
        // The ORB was faster.
    }
}

NotifyScript& FakeNotifyService::script() {
    return m_state->script;
}

EventChannelFactory_ptr FakeNotifyService::Factory() const {
    return EventChannelFactory::_duplicate(m_state->factory.in());
}

void FakeNotifyService::WriteIor(const std::string& path) const {
    const CORBA::String_var text = m_orb->object_to_string(m_state->factory.in());
    std::ofstream(path) << text.in();
}

EventChannel_ptr FakeNotifyService::AddChannel() {
    ChannelID id = 0;
    return m_state->MakeChannel({}, {}, id);
}

std::vector<FakeChannelRecord> FakeNotifyService::Channels() const {
    const std::lock_guard<std::mutex> guard(m_state->lock);
    std::vector<FakeChannelRecord> records;
    for (const auto& [id, channel] : m_state->channels) {
        records.push_back(channel.record);
    }
    return records;
}

EventChannel_ptr FakeNotifyService::Channel(ChannelID id) const {
    const std::lock_guard<std::mutex> guard(m_state->lock);
    const auto found = m_state->channels.find(id);
    return found == m_state->channels.end() ? EventChannel::_nil()
                                            : EventChannel::_duplicate(found->second.reference.in());
}

void FakeNotifyService::Vanish(ChannelID id) {
    m_state->EndChannel(id);
}

void FakeNotifyService::MakeGeneralProxies() {
    const std::lock_guard<std::mutex> guard(m_state->lock);
    m_state->generalProxies = true;
}

std::vector<ProxyID> FakeNotifyService::Proxies() const {
    const std::lock_guard<std::mutex> guard(m_state->lock);
    std::vector<ProxyID> ids;
    for (const auto& [id, proxy] : m_state->proxies) {
        ids.push_back(id);
    }
    return ids;
}

CosNotifyComm::StructuredPushSupplier_ptr FakeNotifyService::Supplier(ProxyID proxy) const {
    const std::lock_guard<std::mutex> guard(m_state->lock);
    const auto found = m_state->proxies.find(proxy);
    return found == m_state->proxies.end()
               ? CosNotifyComm::StructuredPushSupplier::_nil()
               : CosNotifyComm::StructuredPushSupplier::_duplicate(found->second.supplier.in());
}

void FakeNotifyService::Disconnect(ProxyID proxy) {
    const std::lock_guard<std::mutex> guard(m_state->lock);
    const auto found = m_state->proxies.find(proxy);
    if (found != m_state->proxies.end()) {
        found->second.connected = false;
    }
}

std::vector<CosNotification::StructuredEvent> FakeNotifyService::Events() const {
    const std::lock_guard<std::mutex> guard(m_state->lock);
    return m_state->events;
}

void FakeNotifyService::ClearEvents() {
    const std::lock_guard<std::mutex> guard(m_state->lock);
    m_state->events.clear();
}

std::vector<FakeOffer> FakeNotifyService::Offers() const {
    const std::lock_guard<std::mutex> guard(m_state->lock);
    return m_state->offers;
}

}  // namespace qv_test
