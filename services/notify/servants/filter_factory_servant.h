// The makers of filters.
#pragma once

#include <orbsvcs/CosNotifyFilterS.h>

#include <memory>
#include <string>
#include <utility>

#include "services/notify/model/channel_node.h"

namespace qv_notify {

/// The grammars that filters can be made for: the extended one of the notification service, and the trader's,
/// which is a part of it.
bool KnownGrammar(const std::string& grammar);

/// The default filter factory of a channel. Any thread may call.
class FilterFactoryServant : public POA_CosNotifyFilter::FilterFactory {
  public:
    explicit FilterFactoryServant(std::shared_ptr<ChannelNode> channel) : m_channel(std::move(channel)) {}

    /// Raises CORBA::OBJECT_NOT_EXIST when the channel has ended.
    CosNotifyFilter::Filter_ptr create_filter(const char* constraint_grammar) override;
    CosNotifyFilter::MappingFilter_ptr create_mapping_filter(const char* constraint_grammar,
                                                             const CORBA::Any& default_value) override;

  private:
    const std::shared_ptr<ChannelNode> m_channel;
};

/// Brings back a filter of the channel that was kept. Throws StoreError for a constraint that can't be read
/// any more.
void RestoreFilter(const std::shared_ptr<ChannelNode>& channel, const std::string& path,
                   const FilterState& state);

}  // namespace qv_notify
