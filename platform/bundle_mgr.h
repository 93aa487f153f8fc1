#pragma once

#include <atomic>
#include <map>
#include <mutex>
#include <string>

#include "platform/export.h"
#include "platform/service_interface.h"

/// The bundle manager: bundles, the service objects they offer, and what a service lookup needs of them.
namespace NS_BUNDLEMGR1 {

/// What a bundle registers to offer one service.
class QV_API ServiceObjectBase {
  public:
    virtual ~ServiceObjectBase() = default;

    /// The service itself, owned by this object; null when the service isn't up. Lookups keep what they were
    /// given (InterfaceBuffer), so it must stay valid until the process ends, and a bundle that has offered a
    /// service isn't unloaded. Any thread may call it. A lookup calls it while it holds `g_actualmutex`. It
    /// must raise nothing: a lookup ends the process over an exception.
    virtual ServiceInterface* GetInterface() = 0;
};

/// Service objects by name, owned by their bundle.
using ServiceObjectMap = std::map<std::string, ServiceObjectBase*>;

/// One bundle: a named part of the process that offers services.
class QV_API Bundle {
  public:
    virtual ~Bundle() = default;

    /// The bundle's name, which stays the same. Any thread may call it.
    virtual std::string GetName() const = 0;

    /// A copy of the table of service objects; the objects stay the bundle's. Any thread may call it.
    virtual ServiceObjectMap GetServiceObjects() const = 0;
};

/// Bundles by name, owned by the bundle manager and valid until the process ends.
using BundleMap = std::map<std::string, Bundle*>;

/// The process's bundles. Thread safety: every operation may be called from any thread. No operation raises
/// anything: lookups and the supplier threads end the process over an exception.
class QV_API BundleMgr {
  public:
    /// Value of GetRunState of a process that is stopping.
    static constexpr int kStopping = 2;

    BundleMgr(const BundleMgr&) = delete;
    BundleMgr& operator=(const BundleMgr&) = delete;

    /// The only instance, never null, owned by the platform.
    static BundleMgr* Instance();

    /// The bundle of that name, valid until the process ends; null when there is none.
    Bundle* GetBundle(const std::string& name);

    /// A copy of the table of all bundles.
    BundleMap GetBundles();

    /// The run state of the process: 2 (`kStopping`) when it is stopping, any other value when it isn't.
    int GetRunState();

  private:
    BundleMgr();
    ~BundleMgr();
};

/// The interfaces that lookups of one name have found so far, none of which is ever taken out. Owned by the
/// platform, valid until the process ends. Thread safety: both operations may be called from any thread;
/// Front takes no lock.
class QV_API InterfaceBuffer {
  public:
    virtual ~InterfaceBuffer() = default;

    /// The interface that was added first; null when there is none.
    virtual ServiceInterface* Front() const noexcept = 0;

    /// Adds `service`, which stays its owner's and valid until the process ends. Called under
    /// `g_actualmutex`.
    virtual void Append(ServiceInterface* service) = 0;
};

/// The buffer of the lookups of `name`, made empty on first use; the same object for every call with that
/// name.
QV_API InterfaceBuffer& CheckIFBuf(const std::string& name);

/// The process-wide lock of service lookups. Recursive, since a service object asked for its interface under
/// this lock may have to look up a service itself.
extern QV_API std::recursive_mutex g_actualmutex;

/// Stands for "no service of type T": one object per T in the whole process.
template <class T>
class QV_API NULLServiceInterface {
  public:
    NULLServiceInterface(const NULLServiceInterface&) = delete;
    NULLServiceInterface& operator=(const NULLServiceInterface&) = delete;

    /// The object for T, created on the first call under `g_actualmutex` and never destroyed.
    static NULLServiceInterface& Instance() {
        // Looked at first without the lock, which every lookup of the process would otherwise meet at.
        NULLServiceInterface* instance = m_instance.load(std::memory_order_acquire);
        if (!instance) {
            std::lock_guard<std::recursive_mutex> guard(g_actualmutex);
            instance = m_instance.load(std::memory_order_relaxed);
            if (!instance) {
                instance = new NULLServiceInterface;
                m_instance.store(instance, std::memory_order_release);
            }
        }
        return *instance;
    }

    /// There is no service here: always null.
    T* Get() const noexcept { return nullptr; }

  private:
    NULLServiceInterface() = default;
    ~NULLServiceInterface() = default;

    static inline std::atomic<NULLServiceInterface*> m_instance{nullptr};
};

}  // namespace NS_BUNDLEMGR1
