#pragma once

#include <ace/Thread_Mutex.h>

#include <map>
#include <string>

namespace NS_CORBA {

/// Callers' addresses by thread: carries the address from a request to its reply, which run on one thread.
/// Any thread may use it.
class ThreadAddressMap {
  public:
    /// Inserts or overwrites.
    void Set(int thread, const std::string& address);
    /// "UNKNOW ADDRESS" when there is none.
    std::string Get(int thread) const;
    void Erase(int thread);
    /// Get and Erase in one.
    std::string Take(int thread);

  private:
    mutable ACE_Thread_Mutex m_mutex;
    std::map<int, std::string> m_addresses;  // guarded by m_mutex
};

extern ThreadAddressMap g_ThreadAddressMap;

}  // namespace NS_CORBA
