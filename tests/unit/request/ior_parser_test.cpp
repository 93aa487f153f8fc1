#include <tao/PortableServer/PortableServer.h>

#include <stdexcept>

#include "tests/support/free_port.h"
#include "tests/unit/request/ior_fixture.h"

namespace qv_test {
namespace {

constexpr std::uint32_t kUiop = 0x54414f00;
constexpr std::uint32_t kShmiop = 0x54414f02;
constexpr std::uint32_t kDiop = 0x54414f04;
constexpr std::uint32_t kUnknown = 0x12345678;

class IorParser : public IorTest {};

TEST_F(IorParser, TellsHostAndPortOfTheInternetProfile) {
    for (const bool little : {true, false}) {
        EXPECT_EQ("emsa:2809", Info(Ior({{0, Body("emsa", 2809, 1, 2, little)}}, little)));
        EXPECT_EQ("emsa:2809", Info(Ior({{0, Body("emsa", 2809, 1, 2, !little)}}, little)));
    }
    EXPECT_EQ("emsa:65535", Info(Ior({{0, Body("emsa", 65535)}})));
    EXPECT_EQ("emsa:65535", LastHostAndPort());
}

TEST_F(IorParser, ReadsBothCasesOfHexDigits) {
    const std::string bytes = IorBytes({{0, Body("jklmno", 0xabcd)}});
    EXPECT_EQ("jklmno:43981", Info("IOR:" + Hex(bytes, true)));
    EXPECT_EQ("jklmno:43981", Info("IOR:" + Hex(bytes, false)));
}

TEST_F(IorParser, APortOf0IsNotShown) {
    EXPECT_EQ("emsa", Info(Ior({{0, Body("emsa", 0)}})));
    EXPECT_EQ("emsa:0", LastHostAndPort());
}

TEST_F(IorParser, TheConfigurationChoosesHostAlone) {
    WithPort(false);
    EXPECT_EQ("emsa", Info(Ior({{0, Body("emsa", 2809)}})));
    EXPECT_EQ("emsa:2809", LastHostAndPort());
}

TEST_F(IorParser, TheInternetProfileDecidesAndEndsTheScan) {
    EXPECT_EQ("emsa:2809", Info(Ior({{kUiop, Body("/tmp/x", 1)}, {0, Body("emsa", 2809)}})));
    EXPECT_EQ("emsa:2809", Info(Ior({{0, Body("emsa", 2809)}, {0, Body("other", 1)}, {kShmiop, "damaged"}})));
    EXPECT_EQ("emsa:2809", Info(Ior({{kUnknown, "xyz"}, {0, Body("emsa", 2809)}})));
    EXPECT_EQ("emsa:2809", Info(Ior({{kUnknown, ""}, {1, "components"}, {0, Body("emsa", 2809)}})));
}

TEST_F(IorParser, AmongOtherProfilesTheLastDecides) {
    EXPECT_EQ("/tmp/x", Info(Ior({{kUiop, Body("/tmp/x", 2809)}})));
    EXPECT_EQ("/tmp/x:0", LastHostAndPort());
    EXPECT_EQ("mem:11", Info(Ior({{kShmiop, Body("mem", 11)}})));
    EXPECT_EQ("udp:12", Info(Ior({{kDiop, Body("udp", 12)}})));
    EXPECT_EQ("udp:12", Info(Ior({{kShmiop, Body("mem", 11)}, {kDiop, Body("udp", 12)}})));
    EXPECT_EQ("/tmp/x", Info(Ior({{kShmiop, Body("mem", 11)}, {kUiop, Body("/tmp/x", 12)}})));
}

TEST_F(IorParser, OneDamagedProfileSpoilsAllForGood) {
    EXPECT_EQ("invalid", Info(Ior({{kShmiop, Body("mem", 11, 2, 0)}, {0, Body("emsa", 2809)}})));
    EXPECT_EQ("emsa:2809", LastHostAndPort());
    EXPECT_EQ("invalid", Info(Ior({{kUiop, Body("mem", 11, 1, 3)}, {0, Body("emsa", 2809)}})));
    EXPECT_EQ("emsa:2809", Info(Ior({{0, Body("emsa", 2809)}})));  // the next parse starts afresh
}

TEST_F(IorParser, VersionsFrom10To12) {
    for (const unsigned minor : {0u, 1u, 2u}) {
        EXPECT_EQ("emsa:1", Info(Ior({{0, Body("emsa", 1, 1, minor)}})));
        EXPECT_EQ("p", Info(Ior({{kUiop, Body("p", 1, 1, minor)}})));
    }
    const std::pair<unsigned, unsigned> others[] = {{2, 0}, {0, 0}, {1, 3}, {1, 255}, {255, 2}};
    for (const auto& [major, minor] : others) {
        EXPECT_EQ("invalid", Info(Ior({{0, Body("emsa", 1, major, minor)}}))) << major << '.' << minor;
        EXPECT_EQ("invalid", Info(Ior({{kUiop, Body("emsa", 1, major, minor)}}))) << major << '.' << minor;
    }
}

TEST_F(IorParser, NothingToReadIsInvalid) {
    for (const char* reference : {"", "IOR:", "IOR:0", "IOR:01", "IOR:zz", "IOR", "IIOP:", ":IR", "ior:00",
                                  "iiop:1.2//myhost:2809/key", ":ir:x", " IOR:00", "corbaloc::host:1/x"}) {
        EXPECT_EQ("invalid", Info(reference)) << reference;
        EXPECT_EQ(":0", LastHostAndPort()) << reference;
    }
    EXPECT_EQ("invalid", Info(Ior({})));
    EXPECT_EQ("invalid", Info(Ior({{kUnknown, Body("emsa", 1)}})));
    EXPECT_EQ("invalid", Info(Ior({{0, Body("", 1)}})));  // an empty host
}

TEST_F(IorParser, ANullReferenceIsInvalid) {
    EXPECT_EQ("emsa:2809", Info(Ior({{0, Body("emsa", 2809)}})));  // of which nothing may be left
    m_orb->null = true;
    std::string info = "untouched";
    EXPECT_FALSE(m_parser.GetHostInfo(CORBA::Object::_nil(), info));
    EXPECT_EQ("untouched", info);
    EXPECT_EQ(":0", LastHostAndPort());
    EXPECT_TRUE(m_log->Entries().empty());
}

TEST_F(IorParser, PrefixesCountAtTheBeginningOnly) {
    const std::string ior = Ior({{0, Body("emsa", 2809)}});
    EXPECT_EQ("invalid", Info("x" + ior));
    EXPECT_EQ("invalid", Info("ior:" + ior.substr(4)));
}

TEST_F(IorParser, DigitsEndAtTheFirstThatIsNone) {
    const std::string ior = Ior({{0, Body("emsa", 2809)}});
    EXPECT_EQ("emsa:2809", Info(ior + "7"));
    EXPECT_EQ("emsa:2809", Info(ior + "\n"));
    EXPECT_EQ("emsa:2809", Info(ior + " and more"));
    EXPECT_EQ("emsa:2809", Info(ior + "0g00"));
    EXPECT_EQ("emsa:2809", Info(ior + "\xff\xff"));
    EXPECT_EQ("invalid", Info(ior.substr(0, 20) + "g" + ior.substr(21)));
}

TEST_F(IorParser, AHostEndsAtItsNul) {
    EXPECT_EQ("em:2809", Info(Ior({{0, Body(std::string("em\0sa", 5), 2809)}})));
    EXPECT_EQ("invalid", Info(Ior({{0, Body(std::string("\0emsa", 5), 2809)}})));
}

TEST_F(IorParser, AHostWithoutNulEndsWhereItsLengthSays) {
    CdrText body(true);
    body.Octet(1).Octet(1).Octet(2).Octets("emsa").Ushort(2809);
    EXPECT_EQ("emsa:2809", Info(Ior({{0, body.bytes()}})));
}

TEST_F(IorParser, AMissingPortIsNoFailure) {
    CdrText body(true);
    body.Octet(1).Octet(1).Octet(2).String("emsa");
    EXPECT_EQ("emsa", Info(Ior({{0, body.bytes()}})));
    EXPECT_EQ("emsa:11", Info(Ior({{kShmiop, Body("mem", 11)}, {0, body.bytes()}})));
}

TEST_F(IorParser, TextualFormTellsTheHostOnly) {
    for (const char* reference : {"IIOP:1.2//myhost:2809/key", "IIOP://myhost:2809/key", "IIOP:xymyhost:2809",
                                  "IIOP:1.0//myhost:", "IIOP://myhost:2809"}) {
        EXPECT_EQ("myhost", Info(reference)) << reference;
        EXPECT_EQ("myhost:0", LastHostAndPort()) << reference;
    }
    EXPECT_EQ("1.2/myhost", Info("IIOP://1.2/myhost:1/k"));
    EXPECT_EQ("2/myhost", Info("IIOP:1.2/myhost:1/k"));  // one slash: not a version
    for (const char* reference : {"IIOP:myhost", "IIOP:", "IIOP:1", "IIOP::", "IIOP://", "IIOP://myhost",
                                  "IIOP://:2809/key", "IIOP:1.2//", "IIOP:1.2//:1"}) {
        EXPECT_EQ("invalid", Info(reference)) << reference;
    }
}

TEST_F(IorParser, PoopFormTellsWhatStandsBeforeTheColon) {
    EXPECT_EQ("R", Info(":IR:x"));
    EXPECT_EQ("R:0", LastHostAndPort());
    EXPECT_EQ("Rhost", Info(":IRhost:pl:xyz"));
    EXPECT_EQ("invalid", Info(":IRhost"));
}

TEST_F(IorParser, StepsMayBeCalledAlone) {
    m_parser.CatIIOP(nullptr);
    m_parser.CatPOOP(nullptr);
    m_parser.CatPOOP("x");
    m_parser.CatIOR(nullptr);
    EXPECT_EQ(":0", LastHostAndPort());
    m_parser.CatIIOP("//a:1");
    EXPECT_EQ("a:0", LastHostAndPort());
    m_parser.CatPOOP("xyb:");
    EXPECT_EQ("b:0", LastHostAndPort());
    m_parser.CatIOR(Hex(IorBytes({{0, Body("emsa", 7)}})).c_str());
    EXPECT_EQ("emsa:7", LastHostAndPort());
}

TEST_F(IorParser, AnExceptionOfTheOrbIsLoggedAndFalse) {
    m_orb->reference.reset();
    std::string info = "untouched";
    EXPECT_FALSE(m_parser.GetHostInfo(CORBA::Object::_nil(), info));
    EXPECT_EQ("untouched", info);
    const auto entry = m_log->Find("corbadebug", "[IOR_Parser::GetHostInfo] Raised during object_to_string.");
    ASSERT_TRUE(entry);
    EXPECT_EQ("ior_parser", entry->file);
    EXPECT_EQ("unknown", entry->function);
    EXPECT_EQ(339, entry->line);
    EXPECT_EQ(1, entry->level);
    EXPECT_NE(std::string::npos, entry->text.find("NO_RESOURCES"));
}

TEST_F(IorParser, AnExceptionThatIsNotCorbasPasses) {
    m_orb->raise = [] { throw std::runtime_error("broken"); };
    std::string info = "untouched";
    EXPECT_THROW(m_parser.GetHostInfo(CORBA::Object::_nil(), info), std::runtime_error);
    EXPECT_EQ("untouched", info);
    EXPECT_TRUE(m_log->Entries().empty());
}

TEST_F(IorParser, WithoutAnOrbNothingIsTold) {
    config().SetOrb(CORBA::ORB::_nil());
    std::string info = "untouched";
    EXPECT_FALSE(m_parser.GetHostInfo(CORBA::Object::_nil(), info));
    EXPECT_EQ("untouched", info);
    EXPECT_TRUE(m_log->Contains("corbadebug", "Raised during object_to_string."));
}

TEST_F(IorParser, KnowsTheReferencesOfTheRealOrb) {
    const std::string port = std::to_string(FreePort());
    std::string arguments[] = {"-ORBEndpoint", "iiop://127.0.0.1:" + port};
    char* argv[] = {arguments[0].data(), arguments[1].data(), nullptr};
    int argc = 2;
    CORBA::ORB_var orb = CORBA::ORB_init(argc, argv);
    config().SetOrb(orb.in());
    const CORBA::Object_var root = orb->resolve_initial_references("RootPOA");
    const PortableServer::POA_var poa = PortableServer::POA::_narrow(root.in());
    const CORBA::Object_var object = poa->create_reference("IDL:x/Y:1.0");
    std::string info;
    EXPECT_TRUE(m_parser.GetHostInfo(object.in(), info));
    EXPECT_EQ("127.0.0.1:" + port, info);
    WithPort(false);
    EXPECT_TRUE(m_parser.GetHostInfo(object.in(), info));
    EXPECT_EQ("127.0.0.1", info);
    EXPECT_FALSE(m_parser.GetHostInfo(CORBA::Object::_nil(), info));
    EXPECT_EQ("127.0.0.1", info);
    config().SetOrb(CORBA::ORB::_nil());
    orb->destroy();
}

}  // namespace
}  // namespace qv_test
