#include "notification/event_customize_handle.h"

namespace NS_CORBA {

std::map<std::string, EventCustomizeHandle*> g_mapEventCustomizeHandle;
std::map<std::string, void*> g_customizePreMap;
std::map<std::string, void*> g_customizeReplaceMap;
std::map<std::string, void*> g_customizePostMap;
std::list<void*> g_listCustomizeManager;

}  // namespace NS_CORBA
