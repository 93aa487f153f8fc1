#pragma once

#include <orbsvcs/CosNotifyChannelAdminC.h>
#include <tao/ORB.h>

/// Subscribes to `channel` and prints its events, one a line, until `count` have come. Raises
/// CORBA::Exception when the channel can't be had.
void WatchEvents(CORBA::ORB_ptr orb, CosNotifyChannelAdmin::EventChannel_ptr channel, unsigned long count);
