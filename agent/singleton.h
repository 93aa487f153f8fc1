#pragma once

#include <ace/Guard_T.h>
#include <ace/Recursive_Thread_Mutex.h>
#include <ace/Static_Object_Lock.h>

namespace NS_CORBA {

/// Held while a singleton is made or deleted. One lock for all of them, and recursive: a constructor may ask
/// for another singleton.
using SingletonGuard = ACE_Guard<ACE_Recursive_Thread_Mutex>;

/// The pointer in `slot`, with all that was written to the object before it was put there.
template <class T>
T* LoadInstance(T* const& slot) {
    return __atomic_load_n(&slot, __ATOMIC_ACQUIRE);
}

/// The object in `slot`; when there is none, what `make` answers becomes it. Null only when the lock can't be
/// taken. Any thread may call it.
template <class T, class Make>
T* CreateOnce(T*& slot, Make&& make) {
    T* instance = LoadInstance(slot);
    if (instance) {
        return instance;
    }
    const SingletonGuard guard(*ACE_Static_Object_Lock::instance());
    instance = LoadInstance(slot);
    if (!instance && guard.locked()) {
        instance = make();
        __atomic_store_n(&slot, instance, __ATOMIC_RELEASE);
    }
    return instance;
}

/// Takes the object out of `slot`, for the caller to delete: as the pointer goes first, nobody is handed an
/// object whose destructor is running. To be called under a SingletonGuard; null when there is no object.
template <class T>
T* TakeInstance(T*& slot) {
    return __atomic_exchange_n(&slot, static_cast<T*>(nullptr), __ATOMIC_ACQ_REL);
}

}  // namespace NS_CORBA
