#include "logging/thread_address_map.h"

#include <ace/Guard_T.h>

#include <utility>

namespace NS_CORBA {

ThreadAddressMap g_ThreadAddressMap;

using MapGuard = ACE_Guard<ACE_Thread_Mutex>;

namespace {

constexpr char kUnknown[] = "UNKNOW ADDRESS";

}  // namespace

void ThreadAddressMap::Set(int thread, const std::string& address) {
    MapGuard guard(m_mutex);
    m_addresses[thread] = address;
}

std::string ThreadAddressMap::Get(int thread) const {
    MapGuard guard(m_mutex);
    const auto found = m_addresses.find(thread);
    return found == m_addresses.end() ? kUnknown : found->second;
}

std::string ThreadAddressMap::Take(int thread) {
    MapGuard guard(m_mutex);
    const auto found = m_addresses.find(thread);
    if (found == m_addresses.end()) {
        return kUnknown;
    }
    std::string address = std::move(found->second);
    m_addresses.erase(found);
    return address;
}

void ThreadAddressMap::Erase(int thread) {
    MapGuard guard(m_mutex);
    m_addresses.erase(thread);
}

}  // namespace NS_CORBA
