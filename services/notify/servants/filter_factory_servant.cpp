#include "services/notify/servants/filter_factory_servant.h"

#include <algorithm>
#include <array>
#include <mutex>

#include "services/notify/servants/filter_servant.h"
#include "services/notify/servants/node_servant.h"

namespace qv_notify {

bool KnownGrammar(const std::string& grammar) {
    constexpr std::array kGrammars{"EXTENDED_TCL", "ETCL", "TCL", ""};
    return std::find(kGrammars.begin(), kGrammars.end(), grammar) != kGrammars.end();
}

CosNotifyFilter::Filter_ptr FilterFactoryServant::create_filter(const char* constraint_grammar) {
    if (!KnownGrammar(constraint_grammar)) {
        throw CosNotifyFilter::InvalidGrammar();
    }
    // What is kept of a filter while its channel ends would have no channel at the next start.
    const std::lock_guard<std::mutex> channel_guard(m_channel->Mutex());
    if (!m_channel->Alive()) {
        throw CORBA::OBJECT_NOT_EXIST(0, CORBA::COMPLETED_NO);
    }
    ServiceContext& service = m_channel->Service();
    const bool kept = m_channel->Persistent();
    const std::int32_t id = service.NextNumber("filters");
    const auto body = std::make_shared<FilterBody>(id, m_channel->Path() + "/f" + std::to_string(id), kept);
    auto* servant = new FilterServant(m_channel, body, constraint_grammar, 1);
    const PortableServer::ServantBase_var count(servant);
    servant->Save();
    service.AddFilter(body);
    servant->_add_ref();
    service.Activate(body->Path(), kept, servant);
    return ReferToFilter(service, *body);
}

CosNotifyFilter::MappingFilter_ptr FilterFactoryServant::create_mapping_filter(const char*,
                                                                               const CORBA::Any&) {
    RaiseNotOffered(m_channel->Service(), "create_mapping_filter");
}

void RestoreFilter(const std::shared_ptr<ChannelNode>& channel, const std::string& path,
                   const FilterState& state) {
    FilterBody::Constraints constraints;
    for (const ConstraintState& kept : state.constraints) {
        try {
            constraints.push_back({kept.id, kept.types, etcl::Constraint::Parse(kept.text)});
        } catch (const etcl::ConstraintError& error) {
            throw StoreError("Constraint " + std::to_string(kept.id) + " of filter " + path +
                             " can't be read any more: " + error.what() + ".");
        }
    }
    const auto body = std::make_shared<FilterBody>(state.id, path, true);
    body->Set(std::move(constraints));
    ServiceContext& service = channel->Service();
    service.AddFilter(body);
    service.Activate(path, true, new FilterServant(channel, body, state.grammar, state.next_constraint_id));
}

}  // namespace qv_notify
