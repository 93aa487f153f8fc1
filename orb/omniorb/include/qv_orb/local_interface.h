// The base of the local interfaces that the seam declares by hand, and their reference types.
#pragma once

#include <atomic>

#include "qv_orb/orb_base.h"

namespace qv_orb {

/// A reference-counted local object: created with one reference, deleted when the last is released. Derived
/// classes are made with new. Thread-safe.
class QV_ORB_API CountedLocalObject : public virtual CORBA::LocalObject {
  public:
    void _add_ref() override;
    void _remove_ref() override;

  protected:
    CountedLocalObject();
    ~CountedLocalObject() override;

  private:
    std::atomic<unsigned> references_{1};
};

/// Owns one reference to a local object, as the _var types of the mapping do.
template <class T>
class LocalVar {
  public:
    LocalVar() = default;
    LocalVar(T* object) : object_(object) {}
    LocalVar(const LocalVar& other) : object_(T::_duplicate(other.object_)) {}
    LocalVar(LocalVar&& other) noexcept : object_(other._retn()) {}
    ~LocalVar() { CORBA::release(object_); }

    LocalVar& operator=(T* object) {
        CORBA::release(object_);
        object_ = object;
        return *this;
    }
    LocalVar& operator=(const LocalVar& other) {
        if (this != &other) {
            *this = T::_duplicate(other.object_);
        }
        return *this;
    }

    T* operator->() const { return object_; }
    operator T*() const { return object_; }
    T* in() const { return object_; }
    T*& inout() { return object_; }
    T*& out() {
        *this = nullptr;
        return object_;
    }
    T* _retn() {
        T* object = object_;
        object_ = nullptr;
        return object;
    }

  private:
    T* object_ = nullptr;
};

}  // namespace qv_orb

/// Declares the reference types and static operations that the mapping gives a local interface.
#define QV_ORB_LOCAL_INTERFACE(Class)                                                      \
    using _ptr_type = Class*;                                                              \
    using _var_type = qv_orb::LocalVar<Class>;                                             \
    static Class* _nil() {                                                                 \
        return nullptr;                                                                    \
    }                                                                                      \
    static Class* _duplicate(Class* object) {                                              \
        if (object != nullptr) {                                                           \
            object->_NP_incrRefCount();                                                    \
        }                                                                                  \
        return object;                                                                     \
    }                                                                                      \
    static Class* _narrow(CORBA::Object_ptr object) {                                      \
        return CORBA::is_nil(object) ? nullptr : _duplicate(dynamic_cast<Class*>(object)); \
    }
