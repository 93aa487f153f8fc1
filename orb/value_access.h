// The value of an Any as bytes. What prints or counts values of unknown types reads them in this form, which
// both ORBs can give without building an object per element.
#pragma once

#include <tao/AnyTypeCode/Any.h>

#include <cstddef>
#include <memory>
#include <string>

#include "orb/export.h"

namespace qv_orb {

/// The TypeCode of `any`, which stays the Any's.
QV_ORB_API CORBA::TypeCode_ptr TypeOf(const CORBA::Any& any);

/// The CDR form of a TypeCode (CORBA 3.0, 15.3.5.1) in this machine's byte order, counted from an address
/// that is divisible by 8.
QV_ORB_API std::string TypeCodeBytes(CORBA::TypeCode_ptr type);

/// Whether the value of an exception in an Any begins with the exception's repository id, as it does in a
/// reply.
QV_ORB_API bool ExceptionsInAnysCarryId();

/// The CDR form of an Any's value without its TypeCode, counted from an address that is divisible by 8. Valid
/// as long as this object and the Any, which must not be changed meanwhile. Not copied where the ORB holds
/// the value in this form anyway.
class QV_ORB_API ValueBytes {
  public:
    /// Raises a CORBA system exception when the Any's value can't be marshalled.
    explicit ValueBytes(const CORBA::Any& any);
    ~ValueBytes();
    ValueBytes(const ValueBytes&) = delete;
    ValueBytes& operator=(const ValueBytes&) = delete;

    const char* data() const noexcept { return m_data; }  ///< stays this object's or the Any's
    std::size_t size() const noexcept { return m_size; }  ///< bytes
    /// True when the bytes are in the other byte order than this machine's.
    bool swapped() const noexcept { return m_swapped; }

  private:
    struct Copy;

    const char* m_data = nullptr;
    std::size_t m_size = 0;
    bool m_swapped = false;
    std::unique_ptr<Copy> m_copy;  // only where the ORB had to marshal the value
};

}  // namespace qv_orb
