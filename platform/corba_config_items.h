#pragma once

#include <string>
#include <vector>

#include "platform/export.h"
#include "platform/name_value.h"

namespace NS_BUNDLEMGR1 {

/// The platform's configuration store as the CORBA agent sees it: a flat list of name and value texts.
///
/// All state lives behind the exported functions; the class has no data of its own, so any implementation of
/// the shared library can take its place. Thread safety: every operation may be called from any thread at
/// once. Errors: no operation throws for a missing or unusable configuration; the store is then empty.
class QV_API CorbaConfigItems {
  public:
    CorbaConfigItems(const CorbaConfigItems&) = delete;
    CorbaConfigItems& operator=(const CorbaConfigItems&) = delete;

    /// The store's only instance, never null, owned by the platform.
    static CorbaConfigItems* Instance();

    /// Replaces the contents of `items` by all pairs of the agent. A key that isn't configured isn't
    /// delivered. False when the store couldn't be read; `items` is then empty.
    bool GetCorbaConfigItems(std::vector<NameValueStru>& items);

    /// Reads one whole-number item. True and the value when the key is configured; else `value` stays as it
    /// was.
    bool GetIntItemInfo(const std::string& key, int& value);

    /// The node's IP address as text. False, with `ip` untouched, when it can't be found out.
    bool GetHostIP(std::string& ip);

    /// True when the node runs behind a virtual server address (LVS mode).
    bool GetLvsMode();

    /// Replaces the contents of `list` by the OSS addresses that may call. The value of each entry is an
    /// address or a host name; its name carries no meaning. An empty list means that none is configured, and
    /// lets everybody in. What counts is the list alone, whatever the answer: a store that can't be read for
    /// the moment should deliver the list it delivered last.
    bool GetIPAddressList(std::vector<NameValueStru>& list);

  private:
    CorbaConfigItems();
    ~CorbaConfigItems();
};

}  // namespace NS_BUNDLEMGR1
