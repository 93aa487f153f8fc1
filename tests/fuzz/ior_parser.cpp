// The input is parsed as a reference, and as the bytes that the digits of an "IOR:" stand for.

#include "request/ior_parser.h"

#include <cstdint>
#include <cstdlib>
#include <string>

#include "tests/unit/request/ior_text.h"

namespace {

std::string Parse(NS_CORBA::IOR_Parser& parser, const std::string& reference) {
    parser.DoWork(reference.c_str());
    std::string text;
    parser.GetIPAndPortInfo(text);
    return text;
}

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

void Check(const std::string& reference) {
    NS_CORBA::IOR_Parser parser;
    const std::string text = Parse(parser, reference);
    const std::size_t colon = text.rfind(':');
    Require(colon != std::string::npos && colon <= reference.size());
    const std::string port = text.substr(colon + 1);
    Require(!port.empty() && port.size() <= 5 && port.find_first_not_of("0123456789") == std::string::npos);
    Require(std::stoul(port) <= 65535);

    // Nothing stays behind of an earlier parse.
    Parse(parser, "IIOP://other:1/key");
    Require(Parse(parser, reference) == text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    Check(input);
    Check("IOR:" + qv_test::Hex(input));
    return 0;
}
