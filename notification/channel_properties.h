#pragma once

#include <orbsvcs/CosNotificationC.h>

namespace NS_CORBA {

/// The quality of service that the agent's channel is made with; whatever isn't in it stays as the service
/// has it.
CosNotification::QoSProperties ChannelQoS(bool persistent);

/// A full channel refuses new events instead of dropping old ones, so that the supplier learns of it and
/// keeps them.
CosNotification::AdminProperties ChannelAdminProperties();

}  // namespace NS_CORBA
