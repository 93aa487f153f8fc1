#include <atomic>
#include <exception>
#include <shared_mutex>
#include <utility>

#include "platform/bundle_mgr.h"
#include "standalone/default_services.h"
#include "standalone/file_log_service.h"
#include "standalone/registry.h"
#include "standalone/report.h"

namespace NS_BUNDLEMGR1 {

std::recursive_mutex g_actualmutex;

namespace {

using ServiceObjectPtr = std::shared_ptr<ServiceObjectBase>;

class RegisteredBundle final : public Bundle {
  public:
    explicit RegisteredBundle(std::string name) : m_name(std::move(name)) {}

    std::string GetName() const override { return m_name; }

    ServiceObjectMap GetServiceObjects() const override {
        std::lock_guard<std::mutex> guard(m_lock);
        ServiceObjectMap map;
        for (const auto& [name, object] : m_objects) {
            map.emplace(name, object.get());
        }
        return map;
    }

    ServiceObjectPtr Replace(const std::string& name, ServiceObjectPtr object) {
        std::lock_guard<std::mutex> guard(m_lock);
        ServiceObjectPtr former = std::exchange(m_objects[name], std::move(object));
        if (!m_objects[name]) {
            m_objects.erase(name);
        }
        return former;
    }

  private:
    const std::string m_name;
    mutable std::mutex m_lock;
    std::map<std::string, ServiceObjectPtr> m_objects;
};

class FoundInterfaces final : public InterfaceBuffer {
  public:
    ServiceInterface* Front() const noexcept override { return m_front.load(std::memory_order_acquire); }

    // Only the first is ever asked for, so only the first is kept.
    void Append(ServiceInterface* service) override {
        ServiceInterface* none = nullptr;
        m_front.compare_exchange_strong(none, service, std::memory_order_release, std::memory_order_relaxed);
    }

    void Clear() noexcept { m_front.store(nullptr, std::memory_order_release); }

  private:
    std::atomic<ServiceInterface*> m_front{nullptr};
};

class OwnService final : public ServiceObjectBase {
  public:
    explicit OwnService(ServiceInterface& service) : m_service(service) {}
    ServiceInterface* GetInterface() override { return &m_service; }

  private:
    ServiceInterface& m_service;
};

/// A service of the platform's own that comes to life when it is first looked up: a process that installs
/// another one needs none of its files.
class LazyService final : public ServiceObjectBase {
  public:
    using Make = ServiceInterface& (*)();

    LazyService(const char* what, Make make) : m_what(what), m_make(make) {}

    // A lookup can't bear an exception, and an agent without the service is better than none.
    ServiceInterface* GetInterface() override {
        try {
            return &m_make();
        } catch (const std::exception& error) {
            qv_standalone::Report(std::string("there is no ") + m_what + ": " + error.what());
            return nullptr;
        }
    }

  private:
    const char* const m_what;
    const Make m_make;
};

ServiceInterface& LogService() {
    return qv_standalone::DefaultLogService();
}

/// All bundles and buffers of the process. Never destroyed: what looks up services during process exit still
/// finds it.
class Registry {
  public:
    static Registry& Instance() {
        static auto* const instance = new Registry;
        return *instance;
    }

    Bundle* Find(const std::string& name) {
        std::lock_guard<std::recursive_mutex> guard(g_actualmutex);
        const auto found = m_bundles.find(name);
        return found == m_bundles.end() ? nullptr : found->second.get();
    }

    BundleMap All() {
        std::lock_guard<std::recursive_mutex> guard(g_actualmutex);
        BundleMap map;
        for (const auto& [name, bundle] : m_bundles) {
            map.emplace(name, bundle.get());
        }
        return map;
    }

    ServiceObjectPtr Replace(const std::string& bundle, const std::string& name, ServiceObjectPtr object) {
        std::lock_guard<std::recursive_mutex> guard(g_actualmutex);
        ServiceObjectPtr former = Obtain(bundle).Replace(name, std::move(object));
        std::lock_guard<std::shared_mutex> buffers(m_buffersLock);
        for (auto& entry : m_buffers) {
            entry.second.Clear();
        }
        return former;
    }

    // Asked by every lookup of the process, and many times in a row for one name: a thread that asks for what
    // it asked for last needs no lock, as entries neither move nor go.
    InterfaceBuffer& Buffer(const std::string& name) {
        thread_local Buffers::value_type* last = nullptr;
        if (last == nullptr || last->first != name) {
            last = &Entry(name);
        }
        return last->second;
    }

    std::atomic<int>& RunState() { return m_runState; }

  private:
    Registry() {
        RegisteredBundle& own = Obtain(qv_standalone::kPlatformBundle);
        own.Replace(qv_standalone::kLogService, std::make_shared<LazyService>("log service", LogService));
        own.Replace(qv_standalone::kSecurityService,
                    std::make_shared<LazyService>("security service", qv_standalone::DefaultSecurityService));
        own.Replace(qv_standalone::kAuditService,
                    std::make_shared<LazyService>("audit service", qv_standalone::DefaultAuditService));
    }

    using Buffers = std::map<std::string, FoundInterfaces>;

    // Nobody who only reads waits for others who do.
    Buffers::value_type& Entry(const std::string& name) {
        {
            std::shared_lock<std::shared_mutex> lock(m_buffersLock);
            const auto found = m_buffers.find(name);
            if (found != m_buffers.end()) {
                return *found;
            }
        }
        std::lock_guard<std::shared_mutex> guard(m_buffersLock);
        return *m_buffers.try_emplace(name).first;
    }

    RegisteredBundle& Obtain(const std::string& name) {
        auto& bundle = m_bundles[name];
        if (!bundle) {
            bundle = std::make_unique<RegisteredBundle>(name);
        }
        return *bundle;
    }

    std::map<std::string, std::unique_ptr<RegisteredBundle>> m_bundles;
    std::shared_mutex m_buffersLock;  // guards the table, whose entries stay where they are
    Buffers m_buffers;
    std::atomic<int> m_runState{0};
};

}  // namespace

BundleMgr::BundleMgr() = default;
BundleMgr::~BundleMgr() = default;

BundleMgr* BundleMgr::Instance() {
    static auto* const instance = new BundleMgr;
    return instance;
}

Bundle* BundleMgr::GetBundle(const std::string& name) {
    return Registry::Instance().Find(name);
}
BundleMap BundleMgr::GetBundles() {
    return Registry::Instance().All();
}
int BundleMgr::GetRunState() {
    return Registry::Instance().RunState().load();
}

InterfaceBuffer& CheckIFBuf(const std::string& name) {
    return Registry::Instance().Buffer(name);
}

}  // namespace NS_BUNDLEMGR1

namespace qv_standalone {

using NS_BUNDLEMGR1::Registry;
using NS_BUNDLEMGR1::ServiceObjectBase;

std::shared_ptr<ServiceObjectBase> ReplaceServiceObject(const std::string& bundle, const std::string& name,
                                                        std::shared_ptr<ServiceObjectBase> object) {
    return Registry::Instance().Replace(bundle, name, std::move(object));
}

std::shared_ptr<ServiceObjectBase> MakeServiceObject(NS_BUNDLEMGR1::ServiceInterface& service) {
    return std::make_shared<NS_BUNDLEMGR1::OwnService>(service);
}

void SetRunState(int state) {
    Registry::Instance().RunState().store(state);
}

}  // namespace qv_standalone
