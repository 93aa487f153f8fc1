// The libraries export what is public, under their version, and nothing else.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "tests/support/child_process.h"

namespace {

using qv_test::RunResult;
using testing::Contains;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

struct Symbol {
    std::string name;     ///< as the linker knows it
    std::string version;  ///< empty for none
};

std::vector<Symbol> ExportsOf(const std::string& library) {
    const RunResult run = qv_test::Run(
        {"nm", "--dynamic", "--defined-only", "--with-symbol-versions", QV_LIB_DIR "/" + library});
    EXPECT_EQ(run.code, 0) << run.err;
    std::vector<Symbol> symbols;
    std::istringstream lines(run.out);
    for (std::string address, kind, name; lines >> address >> kind >> name;) {
        const std::size_t at = name.find('@');
        if (kind != "A") {
            symbols.push_back(
                {name.substr(0, at), at == std::string::npos ? "" : name.substr(name.rfind('@') + 1)});
        }
    }
    EXPECT_GT(symbols.size(), 1U) << library;
    return symbols;
}

std::string Demangled(const std::vector<std::string>& names) {
    std::vector<std::string> command{"c++filt"};
    command.insert(command.end(), names.begin(), names.end());
    return qv_test::Run(command).out;
}

/// Names of which the demangled form doesn't begin with one of the public ones.
std::vector<std::string> Stray(const std::string& library, const std::string& public_names) {
    std::vector<std::string> names;
    for (const Symbol& symbol : ExportsOf(library)) {
        names.push_back(symbol.name);
    }
    const std::regex is_public(
        "((typeinfo|typeinfo name|vtable|VTT) for |(non-virtual|virtual) thunk to |"
        "construction vtable for .*-in-)?(" +
        public_names + ")[^]*");
    std::vector<std::string> stray;
    std::istringstream lines(Demangled(names));
    for (std::string line; std::getline(lines, line);) {
        if (!std::regex_match(line, is_public)) {
            stray.push_back(line);
        }
    }
    return stray;
}

TEST(ExportedSymbols, OfTheLibraryArePublic) {
    EXPECT_THAT(Stray("libqv_corba_pub.so",
                      "NS_CORBA::|NS_UTIL::IPAcl|Server_ORBInitializer|Server_Request_Interceptor|"
                      "NS_BUNDLEMGR1::NULLServiceInterface"),
                IsEmpty());
}

TEST(ExportedSymbols, OfTheOrbAreThoseOfTheMappingAndOfItsOwnHeaders) {
    EXPECT_THAT(
        Stray("libqv_orb.so",
              "CORBA::|PortableInterceptor::|PortableServer::|Dynamic::|Messaging::|TimeBase::|CosEvent|"
              "CosNotif|POA_|OBV_|TAO_DynAnyFactory::|operator(<<|>>)=\\(CORBA::Any|omniRemoteIdentity::|"
              "cdrEncapsulationStream::cdrEncapsulationStream|"
              "qv_tables_|qv_orb::(CountedLocalObject|RequestValues|RequestHold|ValueBytes|ExceptionText|"
              "SetServantThreads|SetIpFlag|PeerAddress|TaoMinorCode|MakeDynAny|SetDiagnosticSink|TakeEvent|"
              "EventToOctets|EventFromOctets|PublishUnderKey|EndpointOf|TypeOf|TypeCodeBytes|"
              "ExceptionsInAnysCarryId|RegisterInterfaces|FindOperation|BoundedW?string|BoundedString)"),
        IsEmpty());
}

TEST(ExportedSymbols, OfThePlatformArePublic) {
    for (const char* library : {"libqv_bundlemgr.so", "libqv_selfgovernedutil.so", "libqv_callchain.so"}) {
        EXPECT_THAT(Stray(library, "NS_[A-Z0-9_]+::|xDENcommon::|qv_standalone::|v?snprintf_s|strncpy_s"),
                    IsEmpty())
            << library;
    }
}

/// Words of the lines of headers that hold a mark.
std::set<std::string> MarkedWords(const std::string& mark) {
    std::set<std::string> words;
    for (const char* folder : {"time", "logging", "agent", "request", "notification", "platform"}) {
        for (const auto& entry :
             std::filesystem::directory_iterator(std::string(QV_SOURCE_DIR "/") + folder)) {
            std::ifstream header(entry.path());
            for (std::string line; entry.path().extension() == ".h" && std::getline(header, line);) {
                const std::regex word("[A-Za-z_][A-Za-z_0-9]*");
                std::set<std::string> found;
                for (std::sregex_iterator at(line.begin(), line.end(), word), end; at != end; ++at) {
                    found.insert(at->str());
                }
                if (found.count(mark) != 0) {
                    words.merge(found);
                }
            }
        }
    }
    return words;
}

/// The class, or what stands in no class, that a symbol belongs to.
std::string OwnerOf(const std::string& demangled) {
    std::smatch match;
    const std::regex owner(
        "(?:.* (?:for|to) |construction vtable for .*-in-)?(?:NS_[A-Z0-9]+::)?([A-Za-z_0-9]+)[^]*");
    return std::regex_match(demangled, match, owner) ? match[1].str() : demangled;
}

TEST(ExportedSymbols, OfTheLibraryAreMarkedInAHeaderAndThoseForTestsApart) {
    const std::set<std::string> marked = MarkedWords("QV_API");
    const std::set<std::string> internal = MarkedWords("QV_INTERNAL_API");
    ASSERT_GT(marked.size(), 50U);
    const std::vector<Symbol> symbols = ExportsOf("libqv_corba_pub.so");
    std::vector<std::string> names;
    for (const Symbol& symbol : symbols) {
        names.push_back(symbol.name);
    }
    std::istringstream demangled(Demangled(names));
    for (const Symbol& symbol : symbols) {
        std::string line;
        ASSERT_TRUE(std::getline(demangled, line));
        const std::string owner = OwnerOf(line);
        const bool for_tests = symbol.version == "QV_CORBA_PUB_PRIVATE";
        EXPECT_EQ((for_tests ? internal : marked).count(owner), 1U)
            << owner << " of " << symbol.name << ", " << symbol.version;
    }
}

TEST(ExportedSymbols, CarryTheVersionOfTheirLibrary) {
    for (const Symbol& symbol : ExportsOf("libqv_corba_pub.so")) {
        EXPECT_THAT(symbol.version, testing::AnyOf("QV_CORBA_PUB_1", "QV_CORBA_PUB_PRIVATE")) << symbol.name;
    }
    std::vector<std::string> unversioned;
    for (const Symbol& symbol : ExportsOf("libqv_orb.so")) {
        if (symbol.version != "QV_ORB_1") {
            unversioned.push_back(symbol.name);
        }
    }
    // They replace the ORB's own, to which its libraries refer without a version.
    EXPECT_THAT(
        unversioned,
        UnorderedElementsAre(
            "_ZN18omniRemoteIdentity8dispatchER18omniCallDescriptor", "_ZN22cdrEncapsulationStreamC1Ejb",
            "_ZN14PortableServer21DynamicImplementation9_dispatchER14omniCallHandle",
            "_ZTv0_n80_N14PortableServer21DynamicImplementation9_dispatchER14omniCallHandle"));
}

TEST(ExportedSymbols, OfThePlatformHaveNoVersionSinceOthersTakeTheirPlace) {
    for (const char* library : {"libqv_bundlemgr.so", "libqv_selfgovernedutil.so", "libqv_callchain.so"}) {
        for (const Symbol& symbol : ExportsOf(library)) {
            EXPECT_EQ(symbol.version, "") << symbol.name;
        }
    }
}

TEST(ExportedSymbols, IncludeTheTypesOfExceptions) {
    std::vector<std::string> names;
    for (const char* library : {"libqv_corba_pub.so", "libqv_orb.so"}) {
        for (const Symbol& symbol : ExportsOf(library)) {
            names.push_back(symbol.name);
        }
    }
    EXPECT_THAT(names, Contains("_ZTIN8NS_CORBA16ProcessExceptionE"));
    EXPECT_THAT(names, Contains("_ZTIN19PortableInterceptor14ForwardRequestE"));
    EXPECT_THAT(names, Contains("_ZTIN15CosNotification14UnsupportedQoSE"));
}

}  // namespace
