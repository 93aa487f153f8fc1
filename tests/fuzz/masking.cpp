// The input is an operation and the texts of its parameters. Whatever they are, no text at a secret place
// comes out in a record's parameters, and no password of a printed list of pairs.

#include <tao/ORB.h>

#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "logging/logmgr.h"
#include "tests/support/capturing_log_service.h"

namespace {

using NS_CORBA::CorbaLogMgr;

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// The log manager with an ORB, without which no string goes into an Any, and a log service that asks for
/// everything.
CorbaLogMgr& Manager() {
    static CorbaLogMgr* const manager = [] {
        int argc = 0;
        char* argv[] = {nullptr};
        static CORBA::ORB_var orb = CORBA::ORB_init(argc, argv);
        static auto* const capture = new qv_test::ScopedLogCapture;
        (*capture)->SetVerbose(1);
        CorbaLogMgr::Instance()->InitIfNameToParamPos();
        return CorbaLogMgr::Instance();
    }();
    return *manager;
}

const std::vector<std::pair<std::string, std::vector<std::size_t>>>& Operations() {
    static const std::vector<std::pair<std::string, std::vector<std::size_t>>> operations = {
        {"getEmsSession", {1}},
        {"modifyPassword", {1, 2}},
        {"createPMCollectionTask", {3}},
        {"getNMorEmManager", {1, 3}},
        {"GetSTFromGWByUserInfo", {1, 4}},
        {"planGateway", {0}},
        {"hello", {}}};
    return operations;
}

/// The lines of the input, without what a CORBA string can't hold.
std::vector<std::string> Lines(const std::uint8_t* data, std::size_t size) {
    std::vector<std::string> lines(1);
    for (std::size_t i = 0; i < size; ++i) {
        if (data[i] == '\n') {
            lines.emplace_back();
        } else if (data[i] != 0) {
            lines.back() += static_cast<char>(data[i]);
        }
    }
    return lines;
}

/// A secret that nothing else in a record is like.
std::string Secret(const std::string& text) {
    return "<#" + text + "#>";
}

void CheckParameters(const std::string& operation, const std::vector<std::size_t>& secret,
                     const std::vector<std::string>& texts) {
    Dynamic::ParameterList_var list = new Dynamic::ParameterList;
    list->length(static_cast<CORBA::ULong>(texts.size()));
    std::map<std::size_t, std::string> secrets;
    for (const std::size_t place : secret) {
        if (place < texts.size()) {
            secrets[place] = Secret(texts[place]);
        }
    }
    for (CORBA::ULong i = 0; i < list->length(); ++i) {
        list[i].mode = CORBA::PARAM_IN;
        list[i].argument <<= secrets.count(i) != 0 ? secrets[i].c_str() : texts[i].c_str();
    }
    std::string text;
    try {
        Manager().SecurityHandle(list, operation);
        Require(Manager().ParseParaInfo(list.operator->(), text, 0) == 0);
    } catch (const CORBA::BAD_PARAM&) {
        Require(secrets.size() < secret.size());
        Require(text.empty());
        return;
    }
    for (const auto& entry : secrets) {
        for (std::size_t i = 0; i < texts.size(); ++i) {
            if (secrets.count(i) == 0 && texts[i].find(entry.second) != std::string::npos) {
                return;  // the caller said it himself, in the open
            }
        }
        Require(text.find(entry.second) == std::string::npos);
    }
}

void CheckPairs(const std::vector<std::string>& texts) {
    std::string printed = "{";
    std::vector<std::string> secrets;
    for (std::string value : texts) {
        for (std::size_t brace; (brace = value.find('}')) != std::string::npos;) {
            value.erase(brace, 1);
        }
        secrets.push_back(Secret(value));
        printed += "{name USER value " + value + "} {name USERPWD value " + secrets.back() + "} ";
    }
    printed += "}";
    std::string masked;
    Manager().LogOutSessionParamterAnonyms(masked, printed, "logOutSession");
    for (const std::string& secret : secrets) {
        if (printed.find(secret) == printed.rfind(secret)) {
            Require(masked.find("value " + secret) == std::string::npos);
        }
    }
    std::string anything;
    Manager().LogOutSessionParamterAnonyms(anything, texts[0], "logOutSession");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    Manager();
    const auto& operation = Operations()[data[0] % Operations().size()];
    const std::vector<std::string> texts = Lines(data + 1, size - 1);
    CheckParameters(operation.first, operation.second, texts);
    CheckPairs(texts);
    return 0;
}
