// Filter objects.
#pragma once

#include <orbsvcs/CosNotifyFilterS.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "services/notify/model/channel_node.h"
#include "services/notify/model/supplier_port.h"

namespace qv_notify {

/// A filter of the default grammar, which ends with its channel. Any thread may call.
class FilterServant : public POA_CosNotifyFilter::Filter {
  public:
    /// A filter may have so many constraints: each event is held against them, and an answer holds them all.
    /// One more raises CORBA::IMP_LIMIT.
    static constexpr std::size_t kMaxConstraints = 10000;

    FilterServant(std::shared_ptr<ChannelNode> channel, std::shared_ptr<FilterBody> body, std::string grammar,
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

    /// Writes down what there is of it. The channel's mutex is held.
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

    ServiceContext& Service() const { return m_channel->Service(); }

    const std::shared_ptr<ChannelNode> m_channel;
    const std::shared_ptr<FilterBody> m_body;
    const std::string m_grammar;

    mutable std::mutex m_mutex;  // guards the changes of the body, too; taken before the channel's
    std::int32_t m_next_constraint_id;
    CosNotifyFilter::CallbackID m_next_callback_id = 1;
    std::map<CosNotifyFilter::CallbackID, Callback> m_callbacks;
};

}  // namespace qv_notify
