#include "services/notify/model/service_context.h"

namespace qv_notify {

namespace {

constexpr std::size_t kIntakeThreads = 2;

PortableServer::POA_ptr MakePoa(PortableServer::POA_ptr root, const char* name,
                                PortableServer::LifespanPolicyValue lifespan) {
    CORBA::PolicyList policies(2);
    policies.length(2);
    policies[0] = root->create_lifespan_policy(lifespan);
    policies[1] = root->create_id_assignment_policy(PortableServer::USER_ID);
    const PortableServer::POAManager_var manager = root->the_POAManager();
    PortableServer::POA_var poa = root->create_POA(name, manager.in(), policies);
    for (CORBA::ULong i = 0; i < policies.length(); ++i) {
        policies[i]->destroy();
    }
    return poa._retn();
}

}  // namespace

ServiceContext::ServiceContext(CORBA::ORB_ptr orb, Store* store, OperatorLog& log,
                               const ServiceLimits& limits)
    : m_orb(CORBA::ORB::_duplicate(orb)),
      m_store(store),
      m_log(log),
      m_limits(limits),
      m_intake_pool(kIntakeThreads, &log),
      m_delivery_pool(limits.delivery_threads, &log) {
    const CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
    const PortableServer::POA_var root = PortableServer::POA::_narrow(object.in());
    m_poa = MakePoa(root.in(), "notify_run", PortableServer::TRANSIENT);
    m_kept_poa = MakePoa(root.in(), "notify", PortableServer::PERSISTENT);
}

template <class Work>
auto ServiceContext::WithStore(const std::string& subject, Work&& work) {
    try {
        return work();
    } catch (const StoreError& error) {
        m_log.Tell("store", std::string(error.what()) + " What a client asked of " + subject +
                                " was refused with NO_RESOURCES.");
        throw CORBA::NO_RESOURCES(0, CORBA::COMPLETED_NO);
    }
}

void ServiceContext::Keep(bool persistent, const std::string& path, const std::string& description) {
    if (Store* const store = StoreFor(persistent)) {
        WithStore(path, [&] { store->Put(path, description); });
    }
}

void ServiceContext::Forget(bool persistent, const std::string& path) {
    if (Store* const store = StoreFor(persistent)) {
        WithStore(path, [&] { store->Remove(path); });
    }
}

void ServiceContext::Done(const std::string& path, const std::vector<std::int64_t>& sequences) noexcept {
    try {
        if (m_store != nullptr) {
            m_store->Done(path, sequences);
        }
    } catch (const std::exception& error) {
        try {
            m_log.Tell("store done",
                       std::string(error.what()) + " That the consumer of proxy " + path +
                           " has got events was not written down: after a restart it may get them "
                           "again.");
        } catch (...) {
            // There is nobody left to tell.
        }
    }
}

std::int32_t ServiceContext::NextNumber(const std::string& counter) {
    if (m_store != nullptr) {
        return WithStore(counter, [&] { return static_cast<std::int32_t>(m_store->NextNumber(counter)); });
    }
    const std::lock_guard<std::mutex> guard(m_mutex);
    return ++m_counters[counter];
}

void ServiceContext::Activate(const std::string& path, bool persistent,
                              PortableServer::ServantBase* servant) {
    const PortableServer::ServantBase_var count(servant);
    const PortableServer::ObjectId_var id = PortableServer::string_to_ObjectId(path.c_str());
    Poa(persistent)->activate_object_with_id(id.in(), servant);
}

void ServiceContext::Deactivate(const std::string& path, bool persistent) {
    try {
        const PortableServer::ObjectId_var id = PortableServer::string_to_ObjectId(path.c_str());
        Poa(persistent)->deactivate_object(id.in());
    } catch (const CORBA::Exception&) {
        // It is not active any more, which is what was wanted.
    }
}

CORBA::Object_ptr ServiceContext::Reference(const std::string& path, bool persistent,
                                            const char* type) const {
    const PortableServer::ObjectId_var id = PortableServer::string_to_ObjectId(path.c_str());
    return Poa(persistent)->create_reference_with_id(id.in(), type);
}

std::string ServiceContext::PathOf(CORBA::Object_ptr object) const {
    for (const bool persistent : {false, true}) {
        try {
            const PortableServer::ObjectId_var id = Poa(persistent)->reference_to_id(object);
            const CORBA::String_var path = PortableServer::ObjectId_to_string(id.in());
            return path.in();
        } catch (const PortableServer::POA::WrongAdapter&) {
            continue;
        }
    }
    return "";
}

void ServiceContext::AddFilter(const std::shared_ptr<FilterBody>& filter) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_filters[filter->Path()] = filter;
}

void ServiceContext::RemoveFilter(const std::string& path) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_filters.erase(path);
}

void ServiceContext::EndFiltersOf(const std::string& path) {
    std::vector<std::shared_ptr<FilterBody>> ended;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        const std::string prefix = path + "/f";
        for (auto entry = m_filters.lower_bound(prefix);
             entry != m_filters.end() && entry->first.rfind(prefix, 0) == 0;) {
            ended.push_back(entry->second);
            entry = m_filters.erase(entry);
        }
    }
    for (const std::shared_ptr<FilterBody>& filter : ended) {
        filter->Destroy();
        Deactivate(filter->Path(), filter->Kept());
    }
}

std::shared_ptr<FilterBody> ServiceContext::FilterAt(const std::string& path) const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto found = m_filters.find(path);
    return found == m_filters.end() ? nullptr : found->second;
}

std::shared_ptr<FilterBody> ServiceContext::FilterOf(std::int32_t id) const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    for (const auto& [path, filter] : m_filters) {
        if (filter->Id() == id) {
            return filter;
        }
    }
    return nullptr;
}

}  // namespace qv_notify
