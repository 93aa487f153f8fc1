// Stands in front of the system's resolver: no input of a fuzzer may send queries to a name server.

#include <dlfcn.h>
#include <netdb.h>

extern "C" int getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result) {
    using Function = int (*)(const char*, const char*, const addrinfo*, addrinfo**);
    static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "getaddrinfo"));
    addrinfo numeric{};
    if (hints != nullptr) {
        numeric = *hints;
    }
    numeric.ai_flags |= AI_NUMERICHOST;
    return next(node, service, &numeric, result);
}
