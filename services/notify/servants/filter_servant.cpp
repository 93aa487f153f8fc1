#include "services/notify/servants/filter_servant.h"

#include <algorithm>
#include <utility>

#include "services/notify/channel/type_set.h"

namespace qv_notify {

namespace {

FilterConstraint Parse(std::int32_t id, const CosNotifyFilter::ConstraintExp& wanted) {
    try {
        return {id, NamesOf(wanted.event_types), etcl::Constraint::Parse(wanted.constraint_expr.in())};
    } catch (const etcl::ConstraintError&) {
        throw CosNotifyFilter::InvalidConstraint(wanted);
    }
}

CosNotifyFilter::ConstraintInfo InfoOf(const FilterConstraint& constraint) {
    CosNotifyFilter::ConstraintInfo info;
    const CosNotification::EventTypeSeq_var types = SequenceOf(constraint.types);
    info.constraint_expression.event_types = types.in();
    info.constraint_expression.constraint_expr = constraint.expression->Text().c_str();
    info.constraint_id = constraint.id;
    return info;
}

template <class Constraints>
CosNotifyFilter::ConstraintInfoSeq* InfosOf(const Constraints& constraints) {
    CosNotifyFilter::ConstraintInfoSeq_var infos = new CosNotifyFilter::ConstraintInfoSeq;
    infos->length(static_cast<CORBA::ULong>(constraints.size()));
    CORBA::ULong next = 0;
    for (const FilterConstraint& constraint : constraints) {
        infos[next++] = InfoOf(constraint);
    }
    return infos._retn();
}

template <class Constraints>
auto FindConstraint(Constraints& constraints, std::int32_t id) {
    const auto found = std::find_if(constraints.begin(), constraints.end(),
                                    [id](const FilterConstraint& constraint) { return constraint.id == id; });
    if (found == constraints.end()) {
        throw CosNotifyFilter::ConstraintNotFound(id);
    }
    return found;
}

// A filter without types is for all events, and one constraint of those makes the whole filter so.
std::vector<EventTypeName> TypesOf(const FilterBody::Constraints& constraints) {
    std::vector<EventTypeName> types;
    for (const FilterConstraint& constraint : constraints) {
        if (constraint.types.empty()) {
            return TypeSet::All().Types();
        }
        types.insert(types.end(), constraint.types.begin(), constraint.types.end());
    }
    return types;
}

}  // namespace

FilterServant::FilterServant(std::shared_ptr<ChannelNode> channel, std::shared_ptr<FilterBody> body,
                             std::string grammar, std::int32_t next_constraint_id)
    : m_channel(std::move(channel)),
      m_body(std::move(body)),
      m_grammar(std::move(grammar)),
      m_next_constraint_id(next_constraint_id) {}

char* FilterServant::constraint_grammar() {
    return CORBA::string_dup(m_grammar.c_str());
}

void FilterServant::Save() const {
    Keep(*m_body->Get());
}

void FilterServant::Keep(const Constraints& constraints) const {
    FilterState state{m_body->Id(), m_grammar, {}, m_next_constraint_id};
    for (const FilterConstraint& constraint : constraints) {
        state.constraints.push_back({constraint.id, constraint.types, constraint.expression->Text()});
    }
    Service().Keep(m_body->Kept(), m_body->Path(), Text(state));
}

void FilterServant::Set(Constraints constraints) {
    // Its end, which comes with the channel's, is not to be overtaken by what is kept here.
    const std::lock_guard<std::mutex> channel_guard(m_channel->Mutex());
    if (m_body->Destroyed()) {
        throw CORBA::OBJECT_NOT_EXIST(0, CORBA::COMPLETED_NO);
    }
    Keep(constraints);
    const std::shared_ptr<const Constraints> before = m_body->Get();
    TellCallbacks(*before, constraints);
    m_body->Set(std::move(constraints));
}

CosNotifyFilter::ConstraintInfoSeq* FilterServant::add_constraints(
    const CosNotifyFilter::ConstraintExpSeq& constraint_list) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (m_body->Get()->size() + constraint_list.length() > kMaxConstraints) {
        throw CORBA::IMP_LIMIT(0, CORBA::COMPLETED_NO);
    }
    Constraints added;
    for (CORBA::ULong i = 0; i < constraint_list.length(); ++i) {
        added.push_back(Parse(m_next_constraint_id + static_cast<std::int32_t>(i), constraint_list[i]));
    }
    m_next_constraint_id += static_cast<std::int32_t>(added.size());
    Constraints all = *m_body->Get();
    all.insert(all.end(), added.begin(), added.end());
    Set(std::move(all));
    return InfosOf(added);
}

void FilterServant::modify_constraints(const CosNotifyFilter::ConstraintIDSeq& del_list,
                                       const CosNotifyFilter::ConstraintInfoSeq& modify_list) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    Constraints all = *m_body->Get();
    for (CORBA::ULong i = 0; i < modify_list.length(); ++i) {
        const CosNotifyFilter::ConstraintInfo& wanted = modify_list[i];
        *FindConstraint(all, wanted.constraint_id) =
            Parse(wanted.constraint_id, wanted.constraint_expression);
    }
    for (CORBA::ULong i = 0; i < del_list.length(); ++i) {
        all.erase(FindConstraint(all, del_list[i]));
    }
    Set(std::move(all));
}

CosNotifyFilter::ConstraintInfoSeq* FilterServant::get_constraints(
    const CosNotifyFilter::ConstraintIDSeq& id_list) {
    const std::shared_ptr<const Constraints> all = m_body->Get();
    Constraints wanted;
    for (CORBA::ULong i = 0; i < id_list.length(); ++i) {
        wanted.push_back(*FindConstraint(*all, id_list[i]));
    }
    return InfosOf(wanted);
}

CosNotifyFilter::ConstraintInfoSeq* FilterServant::get_all_constraints() {
    return InfosOf(*m_body->Get());
}

void FilterServant::remove_all_constraints() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    Set({});
}

void FilterServant::destroy() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    Service().Forget(m_body->Kept(), m_body->Path());
    m_body->Destroy();
    Service().RemoveFilter(m_body->Path());
    Service().Deactivate(m_body->Path(), m_body->Kept());
}

CORBA::Boolean FilterServant::match(const CORBA::Any& filterable_data) {
    const std::shared_ptr<const Constraints> constraints = m_body->Get();
    return std::any_of(constraints->begin(), constraints->end(), [&](const FilterConstraint& constraint) {
        const bool covered =
            constraint.types.empty() ||
            std::any_of(constraint.types.begin(), constraint.types.end(),
                        [](const EventTypeName& pattern) { return Means(pattern, "", "%ANY"); });
        return covered && constraint.expression->Matches(filterable_data);
    });
}

CORBA::Boolean FilterServant::match_structured(const CosNotification::StructuredEvent& filterable_data) {
    return m_body->Passes(filterable_data);
}

CORBA::Boolean FilterServant::match_typed(const CosNotification::PropertySeq& filterable_data) {
    const std::shared_ptr<const Constraints> constraints = m_body->Get();
    return std::any_of(constraints->begin(), constraints->end(), [&](const FilterConstraint& constraint) {
        return constraint.expression->Matches(filterable_data);
    });
}

CosNotifyFilter::CallbackID FilterServant::attach_callback(CosNotifyComm::NotifySubscribe_ptr callback) {
    if (CORBA::is_nil(callback)) {
        throw CORBA::BAD_PARAM(0, CORBA::COMPLETED_NO);
    }
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_callbacks[m_next_callback_id] = {CosNotifyComm::NotifySubscribe::_duplicate(callback),
                                       std::make_shared<ClientNotices>(Service().DeliveryPool())};
    return m_next_callback_id++;
}

void FilterServant::detach_callback(CosNotifyFilter::CallbackID callback) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (m_callbacks.erase(callback) == 0) {
        throw CosNotifyFilter::CallbackNotFound();
    }
}

CosNotifyFilter::CallbackIDSeq* FilterServant::get_callbacks() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    CosNotifyFilter::CallbackIDSeq_var ids = new CosNotifyFilter::CallbackIDSeq;
    ids->length(static_cast<CORBA::ULong>(m_callbacks.size()));
    CORBA::ULong next = 0;
    for (const auto& [id, callback] : m_callbacks) {
        ids[next++] = id;
    }
    return ids._retn();
}

void FilterServant::TellCallbacks(const Constraints& before, const Constraints& after) {
    TypeSet types(TypesOf(before));
    const TypeSet::Change change = types.Apply(TypesOf(after), TypesOf(before));
    if (change.Empty()) {
        return;
    }
    const CosNotification::EventTypeSeq_var added = SequenceOf(change.added);
    const CosNotification::EventTypeSeq_var removed = SequenceOf(change.removed);
    for (const auto& entry : m_callbacks) {
        entry.second.notices->Post([callback = entry.second.object,
                                    added = CosNotification::EventTypeSeq(added.in()),
                                    removed = CosNotification::EventTypeSeq(removed.in())] {
            callback->subscription_change(added, removed);
        });
    }
}

}  // namespace qv_notify
