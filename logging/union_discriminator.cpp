#include "logging/union_discriminator.h"

namespace NS_CORBA {

namespace {

/// A wide character as GIOP 1.2 and every encapsulation have it: the number of its bytes, then these, the
/// highest first unless a byte order mark says otherwise. What they mean doesn't matter: labels and values
/// are in one code set.
std::int64_t WideCharacter(CdrReader& reader) {
    std::string_view bytes = reader.Octets(reader.Octet());
    if (bytes.empty() || bytes.size() > sizeof(std::int64_t)) {
        throw CORBA::MARSHAL(0, CORBA::COMPLETED_NO);
    }
    const std::string_view mark = bytes.size() > 2 ? bytes.substr(0, 2) : std::string_view();
    const bool lowestFirst = mark == "\xff\xfe";
    if (lowestFirst || mark == "\xfe\xff") {
        bytes.remove_prefix(mark.size());
    }
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char byte = bytes[lowestFirst ? bytes.size() - 1 - i : i];
        value = value << 8 | static_cast<std::uint8_t>(byte);
    }
    return static_cast<std::int64_t>(value);
}

}  // namespace

std::int64_t ReadDiscriminator(CdrReader& reader, CORBA::TCKind kind) {
    switch (kind) {
        case CORBA::tk_boolean:
        case CORBA::tk_char:
        case CORBA::tk_octet:
            return reader.Octet();
        case CORBA::tk_short:
            return static_cast<std::int16_t>(reader.UShort());
        case CORBA::tk_ushort:
            return reader.UShort();
        case CORBA::tk_long:
            return static_cast<std::int32_t>(reader.ULong());
        case CORBA::tk_ulong:
        case CORBA::tk_enum:
            return reader.ULong();
        case CORBA::tk_longlong:
        case CORBA::tk_ulonglong:
            return static_cast<std::int64_t>(reader.ULongLong());
        case CORBA::tk_wchar:
            return WideCharacter(reader);
        default:
            throw CORBA::BAD_TYPECODE(0, CORBA::COMPLETED_NO);
    }
}

}  // namespace NS_CORBA
