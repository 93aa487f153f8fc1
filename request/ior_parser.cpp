#include "request/ior_parser.h"

#include <ace/CDR_Base.h>
#include <ace/Message_Block.h>

#include <cstdlib>
#include <cstring>

#include "agent/corbabaseagentconfig.h"
#include "logging/corbalogutil.h"

namespace NS_CORBA {

namespace {

constexpr char kIorPrefix[] = "IOR:";
constexpr char kIiopPrefix[] = "IIOP:";
constexpr char kPoopPrefix[] = ":IR";

bool StartsWith(const std::string& text, const char* prefix) {
    return text.rfind(prefix, 0) == 0;
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// The value of a hex digit, -1 for another character.
int Nibble(char c) {
    if (IsDigit(c)) {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

// Appends the bytes of the leading pairs of hex digits.
void AppendBytes(const char* digits, ACE_Message_Block& block) {
    for (; digits[0] != '\0' && digits[1] != '\0'; digits += 2) {
        const int high = Nibble(digits[0]);
        const int low = Nibble(digits[1]);
        if (high < 0 || low < 0) {
            return;
        }
        const char byte = static_cast<char>(high << 4 | low);
        block.copy(&byte, 1);
    }
}

}  // namespace

IOR_Parser::IOR_Parser() = default;

IOR_Parser::~IOR_Parser() = default;

bool IOR_Parser::GetHostInfo(CORBA::Object* object, std::string& hostInfo) {
    try {
        CORBA::ORB_var orb = CorbaBaseAgentConfig::Instance()->GetOrb();
        if (CORBA::is_nil(orb.in())) {
            throw CORBA::BAD_INV_ORDER(0, CORBA::COMPLETED_NO);
        }
        CORBA::String_var reference = orb->object_to_string(object);
        DoWork(reference.in());
    } catch (CORBA::Exception& ex) {
        SetPos("ior_parser", 339);
        TaException(ex, "[IOR_Parser::GetHostInfo] Raised during object_to_string.");
        return false;
    }
    if (!m_valid) {
        return false;
    }
    hostInfo = m_host;
    if (m_port != 0 && CorbaBaseAgentConfig::Instance()->IsUseIPAndPort()) {
        hostInfo += ":" + std::to_string(m_port);
    }
    return m_valid;
}

void IOR_Parser::GetIPAndPortInfo(std::string& ipAndPort) {
    ipAndPort = m_host + ":" + std::to_string(m_port);
}

void IOR_Parser::DoWork(const char* reference) {
    m_valid = true;
    m_ior = reference != nullptr ? reference : "";
    m_host.clear();
    m_port = 0;
    if (StartsWith(m_ior, kIorPrefix)) {
        CatIOR(m_ior.c_str() + std::strlen(kIorPrefix));
    } else if (StartsWith(m_ior, kIiopPrefix)) {
        CatIIOP(m_ior.c_str() + std::strlen(kIiopPrefix));
    } else if (StartsWith(m_ior, kPoopPrefix)) {
        CatPOOP(m_ior.c_str());
    } else {
        m_valid = false;
    }
    if (m_host.empty()) {
        m_valid = false;
    }
}

void IOR_Parser::CatIOR(const char* hexDigits) {
    if (hexDigits == nullptr) {
        m_valid = false;
        return;
    }
    ACE_Message_Block block(std::strlen(hexDigits) / 2 + 10);
    ACE_CDR::mb_align(&block);
    AppendBytes(hexDigits, block);
    if (block.length() == 0) {
        m_valid = false;
        return;
    }
    const int byteOrder = static_cast<unsigned char>(*block.rd_ptr());
    block.rd_ptr(1);
    TAO_InputCDR stream(&block, byteOrder);
    ReadProfiles(stream);
}

void IOR_Parser::CatIIOP(const char* text) {
    if (text == nullptr || *text == '\0') {
        m_valid = false;
        return;
    }
    const std::string reference(text);
    const bool hasVersion = reference.size() >= 5 && IsDigit(reference[0]) && reference[1] == '.' &&
                            IsDigit(reference[2]) && reference.compare(3, 2, "//") == 0;
    const std::size_t start = hasVersion ? 5 : 2;
    const std::size_t colon = reference.find(':', start);
    if (colon == std::string::npos) {
        m_valid = false;
        return;
    }
    m_host = reference.substr(start, colon - start);
    // The conversion begins at the ":" itself, so the port is 0 whatever the text names: callers know such a
    // reference by its host alone.
    const std::size_t slash = reference.find('/', colon);
    const std::string port = reference.substr(colon, slash - colon);
    m_port = static_cast<CORBA::UShort>(std::strtol(port.c_str(), nullptr, 10));
}

void IOR_Parser::CatPOOP(const char* text) {
    if (text == nullptr || *text == '\0') {
        m_valid = false;
        return;
    }
    const std::string reference(text);
    constexpr std::size_t kStart = 2;
    const std::size_t colon = reference.find(':', kStart);
    if (colon == std::string::npos) {
        m_valid = false;
        return;
    }
    m_host = reference.substr(kStart, colon - kStart);
    m_port = 0;
}

}  // namespace NS_CORBA
