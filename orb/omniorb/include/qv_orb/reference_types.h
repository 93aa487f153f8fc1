// The names by which TAO's headers call the _var and _out types of the mapping, over those of the ORB in use.
#pragma once

template <class T>
using TAO_Objref_Var_T = typename T::_var_type;

template <class T>
using TAO_Pseudo_Var_T = typename T::_var_type;

/// An out parameter for an object reference: releases what a _var held, hands the caller's pointer through.
template <class T>
class TAO_Objref_Out_T {
  public:
    using Pointer = typename T::_ptr_type;

    TAO_Objref_Out_T(Pointer& pointer) : pointer_(pointer) { pointer_ = T::_nil(); }
    TAO_Objref_Out_T(typename T::_var_type& variable) : pointer_(variable.out()) {}
    TAO_Objref_Out_T(const TAO_Objref_Out_T&) = default;
    TAO_Objref_Out_T& operator=(const TAO_Objref_Out_T& other) {
        pointer_ = other.pointer_;
        return *this;
    }
    TAO_Objref_Out_T& operator=(Pointer pointer) {
        pointer_ = pointer;
        return *this;
    }

    operator Pointer&() { return pointer_; }
    Pointer& ptr() { return pointer_; }
    Pointer operator->() { return pointer_; }

  private:
    Pointer& pointer_;
};

template <class T>
using TAO_Pseudo_Out_T = TAO_Objref_Out_T<T>;

using TAO_ServantBase = PortableServer::ServantBase;
