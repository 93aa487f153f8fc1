#include "logging/thread_address_map.h"

#include <ace/Guard_T.h>

namespace NS_CORBA {

ThreadAddressMap g_ThreadAddressMap;

using MapGuard = ACE_Guard<ACE_Thread_Mutex>;

void ThreadAddressMap::Set(int thread, const std::string& address) {
    MapGuard guard(m_mutex);
    m_addresses[thread] = address;
}

std::string ThreadAddressMap::Get(int thread) const {
    MapGuard guard(m_mutex);
    const auto found = m_addresses.find(thread);
    return found == m_addresses.end() ? "UNKNOW ADDRESS" : found->second;
}

void ThreadAddressMap::Erase(int thread) {
    MapGuard guard(m_mutex);
    m_addresses.erase(thread);
}

}  // namespace NS_CORBA
