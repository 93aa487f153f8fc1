// What the servants of channels, admins and proxies have in common.
#pragma once

#include <orbsvcs/CosNotifyChannelAdminS.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <utility>

#include "services/notify/model/proxy_node.h"
#include "services/notify/properties/qos.h"

namespace qv_notify {

/// The operations of the standard that this service does not offer: any and sequence events, pulling, mapping
/// filters. Tells the operator and raises CORBA::NO_IMPLEMENT.
[[noreturn]] void RaiseNotOffered(ServiceContext& service, const char* operation);

inline bool TypesWanted(CosNotifyChannelAdmin::ObtainInfoMode mode) {
    return mode == CosNotifyChannelAdmin::ALL_NOW_UPDATES_ON ||
           mode == CosNotifyChannelAdmin::ALL_NOW_UPDATES_OFF;
}
inline bool UpdatesWanted(CosNotifyChannelAdmin::ObtainInfoMode mode) {
    return mode == CosNotifyChannelAdmin::ALL_NOW_UPDATES_ON ||
           mode == CosNotifyChannelAdmin::NONE_NOW_UPDATES_ON;
}

inline const ChannelNode& ChannelOf(const ChannelNode& node) {
    return node;
}
inline const ChannelNode& ChannelOf(const AdminNode& node) {
    return *node.Channel();
}
inline const ChannelNode& ChannelOf(const ProxyNode& node) {
    return node.Channel();
}

inline const PropertyValues& OwnQos(const ChannelNode& node) {
    return node.Qos();
}
inline PropertyValues HoldingQos(const ChannelNode& node) {
    return node.Qos();
}
inline void SetOwnQos(ChannelNode& node, PropertyValues qos) {
    node.SetQos(std::move(qos));
}

template <class Node>
const PropertyValues& OwnQos(const Node& node) {
    return node.Data().qos;
}
template <class Node>
PropertyValues HoldingQos(const Node& node) {
    return node.Holding();
}
template <class Node>
void SetOwnQos(Node& node, PropertyValues qos) {
    auto data = node.Data();
    data.qos = std::move(qos);
    node.SetData(std::move(data));
}

/// So many filters may be attached to an admin or a proxy: each event is held against them.
constexpr std::size_t kMaxFilters = 1000;

/// A servant of an object that a node stands for, with the operations of CosNotification::QoSAdmin. An
/// operation that comes when the object has ended raises CORBA::OBJECT_NOT_EXIST.
template <class Skeleton, class Node, QosLevel kLevel>
class NodeServant : public Skeleton {
  public:
    explicit NodeServant(std::shared_ptr<Node> node) : m_node(std::move(node)) {}

    CosNotification::QoSProperties* get_qos() override {
        const auto lock = Lock();
        return ToSequence(AvailableAt(kLevel, HoldingQos(*m_node)));
    }

    void set_qos(const CosNotification::QoSProperties& qos) override {
        const auto lock = Lock();
        PropertyValues values = OwnQos(*m_node);
        ApplyQos(kLevel, qos, ChannelOf(*m_node).Abilities(), values);
        SetOwnQos(*m_node, std::move(values));
    }

    void validate_qos(const CosNotification::QoSProperties& required_qos,
                      CosNotification::NamedPropertyRangeSeq_out available_qos) override {
        const auto lock = Lock();
        available_qos =
            ValidateQos(kLevel, required_qos, ChannelOf(*m_node).Abilities(), HoldingQos(*m_node));
    }

  protected:
    using MutexLock = std::unique_lock<std::mutex>;

    /// The object stays as it is until the lock goes.
    MutexLock Lock() const {
        MutexLock lock(ChannelOf(*m_node).Mutex());
        if (!m_node->Alive()) {
            throw CORBA::OBJECT_NOT_EXIST(0, CORBA::COMPLETED_NO);
        }
        return lock;
    }
    ServiceContext& Service() const { return ChannelOf(*m_node).Service(); }
    bool Persistent() const { return ChannelOf(*m_node).Persistent(); }

    /// The caller releases the reference. Interface is that of the object at `path`.
    template <class Interface>
    auto Refer(const std::string& path, const char* type) const {
        const CORBA::Object_var object = Service().Reference(path, Persistent(), type);
        return Interface::_unchecked_narrow(object.in());
    }

    const std::shared_ptr<Node> m_node;
};

/// Adds the operations of CosNotifyFilter::FilterAdmin.
template <class Skeleton, class Node, QosLevel kLevel>
class FilteringServant : public NodeServant<Skeleton, Node, kLevel> {
  public:
    using NodeServant<Skeleton, Node, kLevel>::NodeServant;

    /// Only filters that a factory of this service made can be used, and by what is kept only those that are
    /// kept as well; for others CORBA::NO_IMPLEMENT is raised. One more than kMaxFilters raises
    /// CORBA::IMP_LIMIT.
    CosNotifyFilter::FilterID add_filter(CosNotifyFilter::Filter_ptr new_filter) override {
        if (CORBA::is_nil(new_filter)) {
            throw CORBA::BAD_PARAM(0, CORBA::COMPLETED_NO);
        }
        std::shared_ptr<const FilterBody> filter =
            this->Service().FilterAt(this->Service().PathOf(new_filter));
        if (filter == nullptr) {
            RaiseNotOffered(this->Service(), "add_filter with a filter of another service");
        }
        if (this->Persistent() && !filter->Kept()) {
            // After a restart it would be gone, and everything would pass.
            RaiseNotOffered(this->Service(), "add_filter with a filter of a channel that is not kept");
        }
        CosNotifyFilter::FilterID id = 0;
        Change([&](FilterLinks& links) {
            if (links.Ids().size() >= kMaxFilters) {
                throw CORBA::IMP_LIMIT(0, CORBA::COMPLETED_NO);
            }
            id = links.Add(std::move(filter));
        });
        return id;
    }

    void remove_filter(CosNotifyFilter::FilterID filter) override {
        Change([&](FilterLinks& links) {
            if (links.Find(filter) == nullptr) {
                throw CosNotifyFilter::FilterNotFound();
            }
            links.Remove(filter);
        });
    }

    CosNotifyFilter::Filter_ptr get_filter(CosNotifyFilter::FilterID filter) override {
        const auto lock = this->Lock();
        const std::shared_ptr<const FilterBody> found = this->m_node->Data().filters.Find(filter);
        if (found == nullptr) {
            throw CosNotifyFilter::FilterNotFound();
        }
        return ReferToFilter(this->Service(), *found);
    }

    CosNotifyFilter::FilterIDSeq* get_all_filters() override {
        const auto lock = this->Lock();
        const std::vector<std::int32_t> ids = this->m_node->Data().filters.Ids();
        CosNotifyFilter::FilterIDSeq_var sequence = new CosNotifyFilter::FilterIDSeq;
        sequence->length(static_cast<CORBA::ULong>(ids.size()));
        std::copy(ids.begin(), ids.end(), sequence->get_buffer());
        return sequence._retn();
    }

    void remove_all_filters() override {
        Change([](FilterLinks& links) { links.RemoveAll(); });
    }

  private:
    template <class Work>
    void Change(Work&& work) {
        const auto lock = this->Lock();
        auto data = this->m_node->Data();
        work(data.filters);
        this->m_node->SetData(std::move(data));
    }
};

/// What the proxies of both sides have beyond that.
template <class Skeleton>
class ProxyServant : public FilteringServant<Skeleton, ProxyNode, QosLevel::kProxy> {
  public:
    using FilteringServant<Skeleton, ProxyNode, QosLevel::kProxy>::FilteringServant;

    void validate_event_qos(const CosNotification::QoSProperties& required_qos,
                            CosNotification::NamedPropertyRangeSeq_out available_qos) override {
        const auto lock = this->Lock();
        available_qos = ValidateQos(QosLevel::kEvent, required_qos, this->m_node->Channel().Abilities(),
                                    this->m_node->Holding());
    }
};

/// The caller releases the reference.
CosNotifyFilter::Filter_ptr ReferToFilter(ServiceContext& service, const FilterBody& filter);

/// The ids of a map of nodes, as one of the standard's sequences of ids; the caller owns it.
template <class Sequence, class Nodes>
Sequence* IdsOf(const Nodes& nodes) {
    auto sequence = std::make_unique<Sequence>();
    sequence->length(static_cast<CORBA::ULong>(nodes.size()));
    CORBA::ULong next = 0;
    for (const auto& entry : nodes) {
        (*sequence)[next++] = entry.first;
    }
    return sequence.release();
}

}  // namespace qv_notify
