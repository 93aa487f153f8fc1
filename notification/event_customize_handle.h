#pragma once

#include <orbsvcs/CosNotificationC.h>

#include <list>
#include <map>
#include <string>

#include "platform/export.h"

namespace NS_CORBA {

/// A bundle's last word on an event before it goes into the channel. Several pushers may call one at once.
class QV_API EventCustomizeHandle {
  public:
    /// Looks at `event`. @return true to let it go on, false to discard it, which counts as sent
    virtual bool CustomizeEvent(const CosNotification::StructuredEvent& event) = 0;

    virtual ~EventCustomizeHandle() = default;
};

// The tables that bundles fill before the first event: they have no lock. What their pointers point to stays
// the bundle's.

/// Handles by the type name of the events that they are asked about. A null handle counts as none.
extern QV_API std::map<std::string, EventCustomizeHandle*> g_mapEventCustomizeHandle;

/// For the bundles' own use: the library only holds them.
/// @{
extern QV_API std::map<std::string, void*> g_customizePreMap;
extern QV_API std::map<std::string, void*> g_customizeReplaceMap;
extern QV_API std::map<std::string, void*> g_customizePostMap;
extern QV_API std::list<void*> g_listCustomizeManager;
/// @}

}  // namespace NS_CORBA
