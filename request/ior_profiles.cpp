#include "request/ior_parser.h"

namespace NS_CORBA {

namespace {

// Tags of profiles: the standard's own, and those of the ORB's further transports.
constexpr CORBA::ULong kInternet = 0;
constexpr CORBA::ULong kLocalIpc = 0x54414f00;
constexpr CORBA::ULong kSharedMemory = 0x54414f02;
constexpr CORBA::ULong kDatagram = 0x54414f04;

constexpr CORBA::Octet kMajor = 1;
constexpr CORBA::Octet kMinorEnd = 3;

bool ReadVersion(TAO_InputCDR& body) {
    CORBA::Octet major = 0;
    CORBA::Octet minor = 0;
    return body.read_octet(major) && major == kMajor && body.read_octet(minor) && minor < kMinorEnd;
}

bool ReadText(TAO_InputCDR& stream, CORBA::String_var& text) {
    char* read = nullptr;
    const bool done = stream.read_string(read);
    text = read;
    return done && stream.good_bit();
}

}  // namespace

void IOR_Parser::ReadProfiles(TAO_InputCDR& stream) {
    CORBA::String_var typeId;
    CORBA::ULong count = 0;
    if (!ReadText(stream, typeId) || !stream.read_ulong(count) || count == 0) {
        m_valid = false;
        return;
    }
    // The count may be any number. Once a tag can't be read none of those behind it can, so the rest need not
    // be tried.
    CORBA::ULong tag = 0;
    for (CORBA::ULong i = 0; i < count && stream.read_ulong(tag); ++i) {
        ReadProfile(tag, stream);
        if (tag == kInternet) {
            return;
        }
    }
}

void IOR_Parser::ReadProfile(CORBA::ULong tag, TAO_InputCDR& stream) {
    switch (tag) {
        case kInternet:
            return Cat_IIOP_Profile(stream);
        case kLocalIpc:
            return Cat_UIOP_Profile(stream);
        case kSharedMemory:
            return Cat_SHMIOP_Profile(stream);
        case kDatagram:
            return Cat_Profile_Helper(stream);
        default:
            Cat_Octet_Seq(stream);
    }
}

void IOR_Parser::Cat_IIOP_Profile(TAO_InputCDR& stream) {
    Cat_Profile_Helper(stream);
}

void IOR_Parser::Cat_SHMIOP_Profile(TAO_InputCDR& stream) {
    Cat_Profile_Helper(stream);
}

void IOR_Parser::Cat_UIOP_Profile(TAO_InputCDR& stream) {
    if (ReadBody(stream, nullptr)) {
        m_port = 0;
    } else {
        m_valid = false;
    }
}

void IOR_Parser::Cat_Profile_Helper(TAO_InputCDR& stream) {
    if (!ReadBody(stream, &m_port)) {
        m_valid = false;
    }
}

// Reads a body up to its host, which becomes m_host, and on to the port where one is asked for; a port that
// is missing stays as it was. False, with all as it was, for a body that is damaged or of another version.
bool IOR_Parser::ReadBody(TAO_InputCDR& stream, CORBA::UShort* port) {
    CORBA::ULong length = 0;
    if (!stream.read_ulong(length)) {
        return false;
    }
    TAO_InputCDR body(stream, length);
    CORBA::String_var host;
    if (!body.good_bit() || !stream.skip_bytes(length) || !ReadVersion(body) || !ReadText(body, host)) {
        return false;
    }
    m_host = host.in();
    if (port != nullptr) {
        body.read_ushort(*port);
    }
    return true;
}

bool IOR_Parser::Cat_Octet_Seq(TAO_InputCDR& stream) {
    CORBA::ULong length = 0;
    if (!stream.read_ulong(length)) {
        return true;
    }
    // Octet by octet, so that a sequence longer than the stream still takes what is there; with the stream at
    // its end no further read would find anything.
    CORBA::Octet octet = 0;
    for (CORBA::ULong i = 0; i < length && stream.read_octet(octet); ++i) {
    }
    return true;
}

}  // namespace NS_CORBA
