// TAO_InputCDR over ACE's CDR reader.
#pragma once

#include <ace/CDR_Stream.h>

#include "qv_orb/orb_base.h"

/// Reads CDR from a message block. A read past the end fails, clears the good bit and allocates nothing,
/// whatever length the bytes claim. One thread at a time.
class TAO_InputCDR : public ACE_InputCDR {
  public:
    static constexpr ACE_CDR::Octet kGiopMajor = 1;
    static constexpr ACE_CDR::Octet kGiopMinor = 2;

    /// Reads a copy of what lies between the block's read and write pointer, in `byte_order` (0 big-endian, 1
    /// little-endian), aligned as it lies there. The lock guards the reference count of that copy.
    TAO_InputCDR(const ACE_Message_Block* data, ACE_Lock* lock, int byte_order = ACE_CDR_BYTE_ORDER,
                 ACE_CDR::Octet major = kGiopMajor, ACE_CDR::Octet minor = kGiopMinor)
        : ACE_InputCDR(data, byte_order, major, minor, lock) {}

    /// The same without a lock.
    explicit TAO_InputCDR(const ACE_Message_Block* data, int byte_order = ACE_CDR_BYTE_ORDER,
                          ACE_CDR::Octet major = kGiopMajor, ACE_CDR::Octet minor = kGiopMinor)
        : ACE_InputCDR(data, byte_order, major, minor) {}

    /// Reads the encapsulation that takes the next `size` bytes of `outer`, which stays where it is; the
    /// first of them gives the byte order. The good bit is off when `outer` holds less, or `size` is 0.
    TAO_InputCDR(const TAO_InputCDR& outer, size_t size)
        : ACE_InputCDR(outer, size <= outer.length() ? size : 0) {}

    TAO_InputCDR(const TAO_InputCDR&) = default;
    TAO_InputCDR& operator=(const TAO_InputCDR&) = default;

    using ACE_InputCDR::read_string;

    /// A new string, to be freed with CORBA::string_free; null on failure. It ends behind the bytes that were
    /// read even where these lack the NUL.
    ACE_CDR::Boolean read_string(ACE_CDR::Char*& text) {
        text = nullptr;
        ACE_CDR::ULong size = 0;
        if (!read_ulong(size)) {
            return false;
        }
        if (size > length()) {
            good_bit_ = false;
            return false;
        }
        text = CORBA::string_alloc(size);
        text[size] = '\0';
        return read_char_array(text, size);
    }

    /// ACE computes a pointer from any `count`, however large.
    ACE_CDR::Boolean skip_bytes(size_t count) {
        if (count > length()) {
            good_bit_ = false;
            return false;
        }
        return ACE_InputCDR::skip_bytes(count);
    }
};
