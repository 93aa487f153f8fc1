#pragma once

#include <exception>
#include <mutex>
#include <string>
#include <utility>

#include "platform/bundle_mgr.h"
#include "request/process_exception.h"

namespace NS_CORBA {

/// Finds a service of the platform by its type: among the interfaces that earlier lookups of its name left in
/// the platform's cache, otherwise among the service objects of the bundles.
///
/// Nothing but InterfaceNotExistException leaves a lookup; any other exception inside it, a failed allocation
/// included, ends the process. What is found stays the platform's. Any thread may build and use a lookup; one
/// object belongs to one thread.
template <class T>
class ServiceLookup {
  public:
    /// @param name the service's name, under which the platform caches it
    /// @param bundle the one bundle to ask; empty asks all
    /// @param serviceObject the one service object to ask in a bundle; empty asks all
    explicit ServiceLookup(const std::string& name, std::string bundle = {},
                           std::string serviceObject = {}) noexcept
        : m_bundle(std::move(bundle)),
          m_serviceObject(std::move(serviceObject)),
          m_null(NS_BUNDLEMGR1::NULLServiceInterface<T>::Instance()),
          m_lock(NS_BUNDLEMGR1::g_actualmutex),
          m_cached(NS_BUNDLEMGR1::CheckIFBuf(name)) {}

    /// The service. @throws InterfaceNotExistException when no bundle offers it
    T& Get() {
        try {
            T* service = Cached();
            if (!service) {
                service = Search();
            }
            if (!service) {
                ThrowNotExist();
            }
            return *service;
        } catch (InterfaceNotExistException&) {
            throw;
        } catch (...) {
            std::terminate();
        }
    }

  private:
    // The cast takes longer than all the rest of a lookup.
    T* Cached() {
        auto* const front = m_cached.Front();
        if (front != m_front) {
            m_front = front;
            m_service = dynamic_cast<T*>(front);
        }
        return m_service;
    }

    T* Search() {
        const NS_BUNDLEMGR1::BundleMap bundles = Bundles();
        std::lock_guard<std::recursive_mutex> guard(m_lock);
        if (T* service = Cached()) {  // another thread found it meanwhile
            return service;
        }
        for (const auto& bundle : bundles) {
            if (T* service = SearchBundle(*bundle.second)) {
                m_cached.Append(service);
                return service;
            }
        }
        return m_null.Get();
    }

    NS_BUNDLEMGR1::BundleMap Bundles() const {
        NS_BUNDLEMGR1::BundleMgr* const manager = NS_BUNDLEMGR1::BundleMgr::Instance();
        if (m_bundle.empty()) {
            return manager->GetBundles();
        }
        NS_BUNDLEMGR1::BundleMap one;
        if (NS_BUNDLEMGR1::Bundle* const bundle = manager->GetBundle(m_bundle)) {
            one.emplace(m_bundle, bundle);
        }
        return one;
    }

    T* SearchBundle(const NS_BUNDLEMGR1::Bundle& bundle) const {
        for (const auto& object : bundle.GetServiceObjects()) {
            if (!m_serviceObject.empty() && object.first != m_serviceObject) {
                continue;
            }
            if (T* service = dynamic_cast<T*>(object.second->GetInterface())) {
                return service;
            }
        }
        return nullptr;
    }

    [[noreturn]] static void ThrowNotExist() {
        InterfaceNotExistException missing;
        missing.m_code = InterfaceNotExistException::kInterfaceNotExist;
        throw missing;
    }

    const std::string m_bundle;
    const std::string m_serviceObject;
    NS_BUNDLEMGR1::NULLServiceInterface<T>& m_null;  ///< what stands in for a service that no bundle offers
    std::recursive_mutex& m_lock;
    NS_BUNDLEMGR1::InterfaceBuffer& m_cached;
    decltype(m_cached.Front()) m_front = nullptr;  ///< what the cache held last
    T* m_service = nullptr;                        ///< the same, as what it is
};

}  // namespace NS_CORBA
