// What the objects of the service share.
#pragma once

#include <tao/ORB.h>
#include <tao/PortableServer/PortableServer.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "services/notify/channel/channel_traffic.h"
#include "services/notify/channel/filter_body.h"
#include "services/notify/delivery/consumer_health.h"
#include "services/notify/delivery/operator_log.h"
#include "services/notify/delivery/work_pool.h"
#include "services/notify/properties/qos.h"
#include "services/notify/store/store.h"

namespace qv_notify {

/// How the service was told to behave. Nothing changes once it runs.
struct ServiceLimits {
    std::size_t events_per_consumer = 100000;  ///< where no MaxEventsPerConsumer is set
    ChannelLimits channel{500000, std::size_t{1} << 30};
    std::size_t delivery_threads = 64;
    RetryPolicy retry;  ///< give_up_after is for consumers of channels that aren't kept
};

/// The one of a process. It has to outlive all objects of the service.
class ServiceContext {
  public:
    /// `store` may be null: then nothing outlives the process. Raises what the ORB raises.
    ServiceContext(CORBA::ORB_ptr orb, Store* store, OperatorLog& log, const ServiceLimits& limits);

    Store* StoreFor(bool persistent) const { return persistent ? m_store : nullptr; }
    OperatorLog& Log() const { return m_log; }
    const ServiceLimits& Limits() const { return m_limits; }
    Capabilities CapabilitiesOf(bool persistent) const { return {persistent && m_store != nullptr}; }
    WorkPool& IntakePool() { return m_intake_pool; }
    WorkPool& DeliveryPool() { return m_delivery_pool; }
    CORBA::ORB_ptr Orb() const { return m_orb.in(); }

    /// A number that is never given again, not even after a restart where there is a store. Raises
    /// CORBA::NO_RESOURCES when the store does not work.
    std::int32_t NextNumber(const std::string& counter);
    /// Keep or forget an object where `persistent` says so and there is a store; raise as NextNumber does.
    void Keep(bool persistent, const std::string& path, const std::string& description);
    void Forget(bool persistent, const std::string& path);
    /// The consumer at `path` is done with these events. What can't be written down is told to the operator.
    void Done(const std::string& path, const std::vector<std::int64_t>& sequences) noexcept;

    /// The servant serves the object of that path from now on; its reference outlives the process when it is
    /// persistent. The caller's count of the servant passes over.
    void Activate(const std::string& path, bool persistent, PortableServer::ServantBase* servant);
    void Deactivate(const std::string& path, bool persistent);
    /// The caller releases the reference.
    CORBA::Object_ptr Reference(const std::string& path, bool persistent, const char* type) const;
    /// The path of an object of this service; empty for others'.
    std::string PathOf(CORBA::Object_ptr object) const;

    void AddFilter(const std::shared_ptr<FilterBody>& filter);
    void RemoveFilter(const std::string& path);
    /// Ends the filters that the factory of the channel at `path` made.
    void EndFiltersOf(const std::string& path);
    std::shared_ptr<FilterBody> FilterAt(const std::string& path) const;
    std::shared_ptr<FilterBody> FilterOf(std::int32_t id) const;

  private:
    template <class Work>
    auto WithStore(const std::string& subject, Work&& work);
    PortableServer::POA_ptr Poa(bool persistent) const { return persistent ? m_kept_poa.in() : m_poa.in(); }

    const CORBA::ORB_var m_orb;
    Store* const m_store;
    OperatorLog& m_log;
    const ServiceLimits m_limits;
    PortableServer::POA_var m_poa;
    PortableServer::POA_var m_kept_poa;
    WorkPool m_intake_pool;
    WorkPool m_delivery_pool;

    mutable std::mutex m_mutex;
    std::map<std::string, std::int32_t> m_counters;
    std::map<std::string, std::shared_ptr<FilterBody>> m_filters;
};

}  // namespace qv_notify
