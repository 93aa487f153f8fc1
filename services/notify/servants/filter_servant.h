// Filter objects.
#pragma once

#include <orbsvcs/CosNotifyFilterS.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "services/notify/model/service_context.h"
#include "services/notify/model/supplier_port.h"

namespace qv_notify {

/// The grammars that filters can be made for: the extended one of the notification service, and the trader's,
/// which is a part of it.
bool KnownGrammar(const std::string& grammar);

/// A filter of the default grammar. Any thread may call.
class FilterServant : public POA_CosNotifyFilter::Filter {
  public:
    FilterServant(ServiceContext& service, std::shared_ptr<FilterBody> body, std::string grammar,
                  std::int32_t next_constraint_id);

    char* constraint_grammar() override;
    CosNotifyFilter::ConstraintInfoSeq* add_constraints(
        const CosNotifyFilter::ConstraintExpSeq& constraint_list) override;
    void modify_constraints(const CosNotifyFilter::ConstraintIDSeq& del_list,
                            const CosNotifyFilter::ConstraintInfoSeq& modify_list) override;
    CosNotifyFilter::ConstraintInfoSeq* get_constraints(
        const CosNotifyFilter::ConstraintIDSeq& id_list) override;
    CosNotifyFilter::ConstraintInfoSeq* get_all_constraints() override;
    void remove_all_constraints() override;
    void destroy() override;
    CORBA::Boolean match(const CORBA::Any& filterable_data) override;
    CORBA::Boolean match_structured(const CosNotification::StructuredEvent& filterable_data) override;
    CORBA::Boolean match_typed(const CosNotification::PropertySeq& filterable_data) override;
    CosNotifyFilter::CallbackID attach_callback(CosNotifyComm::NotifySubscribe_ptr callback) override;
    void detach_callback(CosNotifyFilter::CallbackID callback) override;
    CosNotifyFilter::CallbackIDSeq* get_callbacks() override;

    /// Writes down what there is of it.
    void Save() const;

  private:
    using Constraints = FilterBody::Constraints;
    struct Callback {
        CosNotifyComm::NotifySubscribe_var object;
        std::shared_ptr<ClientNotices> notices;  // one, so that it is told of changes in their order
    };

    void Keep(const Constraints& constraints) const;
    void Set(Constraints constraints);
    void TellCallbacks(const Constraints& before, const Constraints& after);

    ServiceContext& m_service;
    const std::shared_ptr<FilterBody> m_body;
    const std::string m_grammar;

    mutable std::mutex m_mutex;  // guards the changes of the body, too
    std::int32_t m_next_constraint_id;
    CosNotifyFilter::CallbackID m_next_callback_id = 1;
    std::map<CosNotifyFilter::CallbackID, Callback> m_callbacks;
};

/// The default filter factory of a channel. Any thread may call.
class FilterFactoryServant : public POA_CosNotifyFilter::FilterFactory {
  public:
    FilterFactoryServant(ServiceContext& service, std::string channel, bool persistent)
        : m_service(service), m_channel(std::move(channel)), m_persistent(persistent) {}

    CosNotifyFilter::Filter_ptr create_filter(const char* constraint_grammar) override;
    CosNotifyFilter::MappingFilter_ptr create_mapping_filter(const char* constraint_grammar,
                                                             const CORBA::Any& default_value) override;

  private:
    ServiceContext& m_service;
    const std::string m_channel;
    const bool m_persistent;
};

/// Brings back a filter that was kept. Throws StoreError for a constraint that can't be read any more.
void RestoreFilter(ServiceContext& service, const std::string& path, const FilterState& state);

}  // namespace qv_notify
