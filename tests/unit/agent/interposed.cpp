// Functions of the system, of OpenSSL and of ACE that fail too rarely to wait for it: this executable's own
// definitions take their place for the libraries it loads, and pass on to them unless told to fail.
#include "tests/unit/agent/interposed.h"

#include <ace/OS_NS_unistd.h>
#include <dlfcn.h>
#include <openssl/x509_vfy.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <utility>

namespace {

std::atomic<int> g_forksUntilFailure{0};  // 0: never
std::atomic<bool> g_failSplit{false};
std::atomic<bool> g_failNodeName{false};
std::atomic<qv_test::FailingVerification::Step> g_failVerification{qv_test::FailingVerification::kNone};
qv_test::ReplacedOrbInit::Function g_orbInit;            // empty: the ORB's own
qv_test::ReplacedCreatePolicy::Function g_createPolicy;  // as above

template <typename Function>
Function Next(const char* symbol) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, symbol));
}

}  // namespace

extern "C" __attribute__((visibility("default"))) pid_t fork() {
    static const auto next = Next<pid_t (*)()>("fork");
    const int left = g_forksUntilFailure.load();
    if (left == 1) {
        errno = EAGAIN;
        return -1;
    }
    if (left > 1) {
        g_forksUntilFailure = left - 1;
    }
    return next();
}

extern "C" __attribute__((visibility("default"))) int uname(utsname* name) noexcept {
    static const auto next = Next<int (*)(utsname*)>("uname");
    if (g_failNodeName) {
        errno = EFAULT;
        return -1;
    }
    return next(name);
}

extern "C" __attribute__((visibility("default"))) X509_STORE_CTX* X509_STORE_CTX_new() {
    static const auto next = Next<X509_STORE_CTX* (*)()>("X509_STORE_CTX_new");
    return g_failVerification == qv_test::FailingVerification::kNoContext ? nullptr : next();
}

extern "C" __attribute__((visibility("default"))) int X509_STORE_CTX_init(X509_STORE_CTX* context,
                                                                          X509_STORE* store,
                                                                          X509* certificate,
                                                                          STACK_OF(X509) * untrusted) {
    using Function = int (*)(X509_STORE_CTX*, X509_STORE*, X509*, STACK_OF(X509)*);
    static const auto next = Next<Function>("X509_STORE_CTX_init");
    return g_failVerification == qv_test::FailingVerification::kNoStart
               ? 0
               : next(context, store, certificate, untrusted);
}

namespace CORBA {

__attribute__((visibility("default"))) ORB_ptr ORB_init(int& argc, char** argv, const char* orb_id) {
    using Function = ORB_ptr (*)(int&, char**, const char*);
    static const auto next = Next<Function>("_ZN5CORBA8ORB_initERiPPcPKc");
    return g_orbInit ? g_orbInit(argc, argv, orb_id) : next(argc, argv, orb_id);
}

__attribute__((visibility("default"))) Policy_ptr ORB::create_policy(PolicyType type, const Any& value) {
    using Function = Policy_ptr (*)(ORB*, PolicyType, const Any&);
    static const auto next = Next<Function>("_ZN5CORBA3ORB13create_policyEjRKNS_3AnyE");
    return g_createPolicy ? g_createPolicy(type, value) : next(this, type, value);
}

}  // namespace CORBA

namespace ACE_OS {

__attribute__((visibility("default"))) int string_to_argv(ACE_TCHAR* buf, int& argc, ACE_TCHAR**& argv,
                                                          bool substitute_env_args) {
    using Function = int (*)(ACE_TCHAR*, int&, ACE_TCHAR**&, bool);
    static const auto next = Next<Function>("_ZN6ACE_OS14string_to_argvEPcRiRPS0_b");
    return g_failSplit ? -1 : next(buf, argc, argv, substitute_env_args);
}

}  // namespace ACE_OS

namespace qv_test {

FailingFork::FailingFork(int nth) {
    g_forksUntilFailure = nth;
}
FailingFork::~FailingFork() {
    g_forksUntilFailure = 0;
}

FailingSplit::FailingSplit() {
    g_failSplit = true;
}
FailingSplit::~FailingSplit() {
    g_failSplit = false;
}

FailingNodeName::FailingNodeName() {
    g_failNodeName = true;
}
FailingNodeName::~FailingNodeName() {
    g_failNodeName = false;
}

FailingVerification::FailingVerification(Step step) {
    g_failVerification = step;
}
FailingVerification::~FailingVerification() {
    g_failVerification = kNone;
}

ReplacedOrbInit::ReplacedOrbInit(Function init) {
    g_orbInit = std::move(init);
}
ReplacedOrbInit::~ReplacedOrbInit() {
    g_orbInit = nullptr;
}

ReplacedCreatePolicy::ReplacedCreatePolicy(Function create) {
    g_createPolicy = std::move(create);
}
ReplacedCreatePolicy::~ReplacedCreatePolicy() {
    g_createPolicy = nullptr;
}

}  // namespace qv_test
