#include "tests/unit/request/slow_platform.h"

#include <dlfcn.h>
#include <netdb.h>
#include <sys/socket.h>

#include "platform/corba_config_items.h"

namespace qv_test {

SlowPlatform g_platform;

void SlowPlatform::Reset() {
    addresses.clear();
    onList = nullptr;
    onResolution = nullptr;
    lists = 0;
    resolutions = 0;
}

namespace {

bool IsOwnName(const char* name) {
    const std::string text = name ? name : "";
    return text.size() > 5 && text.compare(text.size() - 5, 5, ".test") == 0;
}

}  // namespace

}  // namespace qv_test

namespace {

using Resolve = int (*)(const char*, const char*, const addrinfo*, addrinfo**);

/// The addresses of a name of this program, in the form that `hints` asks for.
int ResolveOwn(Resolve next, const std::string& name, const addrinfo* hints, addrinfo** result) {
    const bool wantsIPv6 = hints && hints->ai_family == AF_INET6;
    const int found =
        name == "oss.test" || !wantsIPv6 ? EAI_NONAME : next("2001:db8::1", nullptr, hints, result);
    if (name == "six.test") {
        return found;
    }
    const std::string ipv4 = name == "oss.test" ? "10.1.2.3" : "10.1.2.6";
    addrinfo** const end = found == 0 ? &(*result)->ai_next : result;
    return next((wantsIPv6 ? "::ffff:" + ipv4 : ipv4).c_str(), nullptr, hints, end);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int getaddrinfo(const char* name, const char* service,
                                                                  const addrinfo* hints, addrinfo** result) {
    static const auto next = reinterpret_cast<Resolve>(dlsym(RTLD_NEXT, "getaddrinfo"));
    if (!qv_test::IsOwnName(name)) {
        return next(name, service, hints, result);
    }
    ++qv_test::g_platform.resolutions;
    if (qv_test::g_platform.onResolution) {
        qv_test::g_platform.onResolution();
    }
    return ResolveOwn(next, name, hints, result);
}

__attribute__((visibility("default"))) bool NS_BUNDLEMGR1::CorbaConfigItems::GetIPAddressList(
    std::vector<NameValueStru>& list) {
    ++qv_test::g_platform.lists;
    if (qv_test::g_platform.onList) {
        qv_test::g_platform.onList();
    }
    for (const std::string& address : qv_test::g_platform.addresses) {
        list.push_back({"oss", address});
    }
    return true;
}
