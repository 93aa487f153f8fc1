#include "interposed.h"

#include "orb_internals.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>

#include "orb_state.h"
#include "thread_state.h"

namespace {

constexpr char kOutgoingDispatch[] = "_ZN18omniRemoteIdentity8dispatchER18omniCallDescriptor";

// Lets other requests into servants while this thread waits for a peer's answer.
class OutsideServant {
  public:
    OutsideServant() : counted_(qv_orb::thread_state().in_servant) {
        if (counted_) {
            qv_orb::orb_state().servants.Leave();
        }
    }
    ~OutsideServant() {
        if (counted_) {
            qv_orb::orb_state().servants.Return();
        }
    }
    OutsideServant(const OutsideServant&) = delete;
    OutsideServant& operator=(const OutsideServant&) = delete;

  private:
    const bool counted_;
};

}  // namespace

// Every outgoing remote call passes here.
QV_ORB_API void omniRemoteIdentity::dispatch(omniCallDescriptor& call) {
    using Dispatch = void (*)(omniRemoteIdentity*, omniCallDescriptor&);
    static const auto underlying = reinterpret_cast<Dispatch>(dlsym(RTLD_NEXT, kOutgoingDispatch));
    const OutsideServant outside;
    underlying(this, call);
}

// A dynamic skeleton servant takes its request past the interceptors. They are the access control, so it is
// refused whatever it is asked.
QV_ORB_API CORBA::Boolean PortableServer::DynamicImplementation::_dispatch(omniCallHandle&) {
    throw CORBA::NO_IMPLEMENT(0, CORBA::COMPLETED_NO);
}

namespace qv_orb {
namespace {

// Whether some slot of a class's table of virtual functions leads into this library.
bool TableLeadsHere(const char* table_symbol) {
    void* const table = dlsym(RTLD_NEXT, table_symbol);
    Dl_info info{};
    void* entry = nullptr;
    if (table == nullptr || dladdr1(table, &info, &entry, RTLD_DL_SYMENT) == 0 || entry == nullptr) {
        return false;
    }
    const auto* symbol = static_cast<const ElfW(Sym)*>(entry);
    Dl_info here{};
    dladdr(reinterpret_cast<const void*>(&InterpositionInForce), &here);
    void* const* const slots = static_cast<void* const*>(table);
    return std::any_of(slots, slots + symbol->st_size / sizeof(void*), [&here](void* slot) {
        Dl_info target{};
        return slot != nullptr && dladdr(slot, &target) != 0 && target.dli_fbase == here.dli_fbase;
    });
}

}  // namespace

bool InterpositionInForce(std::string& what) {
    for (const char* table : {"_ZTV18omniRemoteIdentity", "_ZTVN14PortableServer21DynamicImplementationE"}) {
        if (!TableLeadsHere(table)) {
            what =
                std::string("the ORB's own functions of ") + table +
                " are in force, so requests could pass the interceptors; link libqv_orb ahead of the omniORB "
                "libraries";
            return false;
        }
    }
    return true;
}

}  // namespace qv_orb
