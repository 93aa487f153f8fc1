// The way back from what the store has kept.
#include <map>
#include <string>
#include <vector>

#include "services/notify/servants/admin_parts.h"
#include "services/notify/servants/factory_servant.h"
#include "services/notify/servants/filter_factory_servant.h"

namespace qv_notify {

namespace {

enum class Kind { kChannel, kAdmin, kProxy, kFilter, kUnknown };

/// "c1", "c1/ca2", "c1/ca2/p7", "c1/f3"
Kind KindOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
        return Kind::kChannel;
    }
    switch (path[slash + 1]) {
        case 'c':
        case 's':
            return Kind::kAdmin;
        case 'p':
            return Kind::kProxy;
        case 'f':
            return Kind::kFilter;
        default:
            return Kind::kUnknown;
    }
}

std::string Parent(const std::string& path) {
    return path.substr(0, path.rfind('/'));
}

template <class Map>
auto& At(Map& nodes, const std::string& path, const std::string& for_what) {
    const auto found = nodes.find(path);
    if (found == nodes.end()) {
        throw StoreError(
            "The store has " + for_what + " but not " + path +
            ", which it belongs to: it is damaged. Put a good copy in its place, or move it away to "
            "start without channels.");
    }
    return *found->second;
}

using Nodes = std::vector<StoredObject>;

class Restorer {
  public:
    Restorer(ServiceContext& service, Store& store, const Nodes& objects)
        : m_service(service), m_store(store), m_objects(objects) {}

    // Filters come before admins and proxies, which may use those of any channel.
    void Run() {
        ForEach(Kind::kChannel, [this](const StoredObject& object) {
            channels[object.path] =
                std::make_shared<ChannelNode>(m_service, ReadChannel(object.description), true);
        });
        ForEach(Kind::kFilter, [this](const StoredObject& object) { TakeFilter(object); });
        ForEach(Kind::kAdmin, [this](const StoredObject& object) { TakeAdmin(object); });
        ForEach(Kind::kProxy, [this](const StoredObject& object) { TakeProxy(object); });
    }

    std::map<std::string, std::shared_ptr<ChannelNode>> channels;
    std::map<std::string, std::shared_ptr<AdminNode>> admins;
    std::map<std::string, std::shared_ptr<ProxyNode>> proxies;

  private:
    template <class Work>
    void ForEach(Kind kind, Work&& work) {
        for (const StoredObject& object : m_objects) {
            if (KindOf(object.path) == kind) {
                work(object);
            }
        }
    }

    void TakeFilter(const StoredObject& object) {
        const auto channel = channels.find(Parent(object.path));
        if (channel == channels.end()) {
            m_store.Remove(object.path);  // it ended with its channel
            return;
        }
        RestoreFilter(channel->second, object.path, ReadFilter(object.description));
    }

    void TakeAdmin(const StoredObject& object) {
        const AdminState state = ReadAdmin(object.description);
        ChannelNode& channel = At(channels, Parent(object.path), object.path);
        channel.RestoreAdmin(state);
        admins[object.path] = channel.FindAdmin(state.for_consumers, state.id);
        Serve(admins[object.path]);
    }

    void TakeProxy(const StoredObject& object) {
        const ProxyState state = ReadProxy(object.description);
        AdminNode& admin = At(admins, Parent(object.path), object.path);
        admin.RestoreProxy(state);
        proxies[object.path] = admin.FindProxy(state.id);
        Serve(proxies[object.path]);
    }

    ServiceContext& m_service;
    Store& m_store;
    const Nodes& m_objects;
};

/// A consumer is sent an event before it is written down that it has it. So after a crash the one that was
/// under way is sent again, which is the first that waits, unless a later one of another supplier overtook
/// it.
void TellInDoubt(OperatorLog& log, const std::map<std::string, std::int64_t>& first_waiting) {
    for (const auto& [consumer, sequence] : first_waiting) {
        log.Tell(consumer + " in doubt", "the consumer of proxy " + consumer +
                                             " may get one event twice, most likely event " +
                                             std::to_string(sequence) +
                                             ": the service did not end in order, and an event may have "
                                             "been under way");
    }
}

}  // namespace

FactoryServant::Restored FactoryServant::Restore(Store& store) {
    Restored restored;
    const bool in_order = store.TakeOrderlyEnd();
    const std::vector<StoredObject> objects = store.Objects();
    Restorer restorer(m_service, store, objects);
    restorer.Run();
    for (const auto& [path, admin] : restorer.admins) {
        admin->Refresh();
    }
    for (const auto& [path, proxy] : restorer.proxies) {
        restored.consumers += proxy->ConsumerFeed() != nullptr && !proxy->Data().peer.empty() ? 1 : 0;
    }
    for (const auto& [path, channel] : restorer.channels) {
        // A crash between the channel and its default admins leaves it without them.
        for (const bool for_consumers : {true, false}) {
            if (channel->FindAdmin(for_consumers, 0) == nullptr) {
                Serve(channel->MakeAdmin(for_consumers, true));
            }
        }
        Add(channel);
        ++restored.channels;
    }
    std::map<std::string, std::int64_t> first_waiting;  // by consumer
    for (const StoredEvent& event : store.Events()) {
        std::vector<std::shared_ptr<Feed>> feeds;
        for (const std::string& consumer : event.consumers) {
            first_waiting.emplace(consumer, event.sequence);
            const auto proxy = restorer.proxies.find(consumer);
            if (proxy != restorer.proxies.end() && proxy->second->ConsumerFeed() != nullptr) {
                feeds.push_back(proxy->second->ConsumerFeed());
            }
        }
        ChannelNode& channel = At(restorer.channels, event.channel, "events");
        const auto supplier = restorer.proxies.find(event.supplier);
        channel.Traffic().Restore(
            event, supplier == restorer.proxies.end() ? channel.Qos() : supplier->second->Holding(),
            event.dispatched ? &feeds : nullptr);
        ++restored.events;
    }
    if (!in_order) {
        TellInDoubt(m_service.Log(), first_waiting);
    }
    return restored;
}

}  // namespace qv_notify
