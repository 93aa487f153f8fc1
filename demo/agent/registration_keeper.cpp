#include "demo/agent/registration_keeper.h"

#include <orbsvcs/CosNamingC.h>

#include "agent/corbabaseagentconfig.h"
#include "demo/agent/console.h"

namespace qv_demo {
namespace {

NS_CORBA::CorbaBaseAgentConfig& Config() {
    return *NS_CORBA::CorbaBaseAgentConfig::Instance();
}

std::string NamingAddress() {
    std::string host;
    int port = 0;
    Config().GetNamingServiceAddr(host, port, Config().GetSSLMode() != 0);
    return host + ":" + std::to_string(port);
}

}  // namespace

RegistrationKeeper::RegistrationKeeper(CORBA::Object_ptr factory, std::chrono::milliseconds check_interval)
    : factory_(CORBA::Object::_duplicate(factory)), policy_(check_interval) {
    Register();
    thread_ = std::thread([this] { Run(); });
}

RegistrationKeeper::~RegistrationKeeper() {
    Stop();
}

void RegistrationKeeper::Stop() {
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        stop_ = true;
    }
    stopped_.notify_all();
    if (thread_.joinable()) {
        thread_.join();
    }
}

void RegistrationKeeper::Run() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!stopped_.wait_for(lock, policy_.Wait(), [this] { return stop_; })) {
        lock.unlock();
        Look();
        lock.lock();
    }
}

void RegistrationKeeper::Register() {
    const bool registered = Config().RegistEMSFactoryName(factory_.in());
    if (!policy_.Registered(registered)) {
        return;
    }
    if (registered) {
        Say("naming  registered as " + FactoryNameText());
    } else {
        Say("naming  the naming service at " + NamingAddress() +
            " can't be reached; the agent runs on and keeps trying");
    }
}

void RegistrationKeeper::Look() {
    const BindingState state = Find();
    const RegistrationPolicy::Step step = policy_.Look(state);
    if (step.report && state == BindingState::kUnreachable) {
        Say("naming  lost the naming service at " + NamingAddress() + "; trying again");
    } else if (step.report && state == BindingState::kOurs) {
        Say("naming  the naming service is back and still knows this agent");
    } else if (step.report && state == BindingState::kForeign && !step.register_now) {
        Say("naming  another agent has taken the name " + FactoryNameText() + "; this one leaves it there");
    }
    if (step.register_now) {
        Register();
    }
}

BindingState RegistrationKeeper::Find() const try {
    CosNaming::NamingContext_var context;
    if (!Config().GetNamingService(context.out()) || CORBA::is_nil(context.in())) {
        return BindingState::kUnreachable;
    }
    CosNaming::Name name;
    Config().ConstructEmsFactoryName(name);
    const CORBA::Object_var bound = context->resolve(name);
    return factory_->_is_equivalent(bound.in()) ? BindingState::kOurs : BindingState::kForeign;
} catch (const CosNaming::NamingContext::NotFound&) {
    return BindingState::kMissing;
} catch (const CORBA::Exception&) {
    return BindingState::kUnreachable;
}

std::string FactoryNameText() {
    CosNaming::Name name;
    Config().ConstructEmsFactoryName(name);
    std::string text;
    for (CORBA::ULong i = 0; i < name.length(); ++i) {
        text += (i == 0 ? "" : " / ") + std::string(name[i].id.in()) + " (" + name[i].kind.in() + ")";
    }
    return text;
}

}  // namespace qv_demo
