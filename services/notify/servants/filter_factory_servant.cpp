#include <algorithm>
#include <array>

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
    const std::int32_t id = m_service.NextNumber("filters");
    const auto body = std::make_shared<FilterBody>(id, m_channel + "/f" + std::to_string(id), m_persistent);
    auto* servant = new FilterServant(m_service, body, constraint_grammar, 1);
    const PortableServer::ServantBase_var count(servant);
    servant->Save();
    m_service.AddFilter(body);
    servant->_add_ref();
    m_service.Activate(body->Path(), m_persistent, servant);
    return ReferToFilter(m_service, *body);
}

CosNotifyFilter::MappingFilter_ptr FilterFactoryServant::create_mapping_filter(const char*,
                                                                               const CORBA::Any&) {
    RaiseNotOffered(m_service, "create_mapping_filter");
}

void RestoreFilter(ServiceContext& service, const std::string& path, const FilterState& state) {
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
    service.AddFilter(body);
    service.Activate(path, true, new FilterServant(service, body, state.grammar, state.next_constraint_id));
}

}  // namespace qv_notify
