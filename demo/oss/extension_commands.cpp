// The commands that need the managers which only this demo's EMS has.
#include <iostream>

#include "demo/oss/commands.h"
#include "demo/oss/extension_client.h"
#include "demo/oss/text.h"
#include "tools/secrets/wiper.h"

namespace qv_oss {
namespace {

NameValues ToPairs(const std::vector<std::string>& assignments) {
    NameValues pairs;
    for (const std::string& assignment : assignments) {
        const std::size_t equals = assignment.find('=');
        pairs.emplace_back(assignment.substr(0, equals), assignment.substr(equals + 1));
    }
    return pairs;
}

void Print(const NameValues& attributes) {
    Table table({"ATTRIBUTE", "VALUE"});
    for (const auto& [name, value] : attributes) {
        table.Add({name, value});
    }
    std::cout << table.Take() << std::flush;
}

}  // namespace

void Commands::ChangePassword() {
    NamingClient naming(orb_.orb(), settings_, caller_);
    const auto factory = emsSessionFactory::EmsSessionFactory_I_var(naming.FindFactory());
    std::string password = ReadPassword(settings_);
    const qv_secrets::Wiper wiper(password);
    std::string old_password = password;
    const qv_secrets::Wiper old_wiper(old_password);
    std::string new_password = ReadNewPassword(settings_);
    const qv_secrets::Wiper new_wiper(new_password);
    OssSession session(orb_, caller_, factory.in(), settings_.user, password);
    ExtensionClient(session, caller_).ChangePassword(settings_.user, old_password, new_password);
    session.LogOut();
    std::cout << "the password of " << settings_.user << " is changed" << std::endl;
}

void Commands::Annotate() {
    NamingClient naming(orb_.orb(), settings_, caller_);
    OssSession session = LogIn(naming);
    const auto element = ElementName(EmsOf(session, naming), settings_.element);
    const ExtensionClient extension(session, caller_);
    if (!settings_.assignments.empty()) {
        extension.Annotate(element, ToPairs(settings_.assignments));
    }
    Print(extension.Attributes(element));
    session.LogOut();
}

void Commands::SetInfo() {
    NamingClient naming(orb_.orb(), settings_, caller_);
    OssSession session = LogIn(naming);
    const auto element = ElementName(EmsOf(session, naming), settings_.element);
    globaldefs::NVSList_T info;
    for (const auto& [name, value] : ToPairs(settings_.assignments)) {
        const CORBA::ULong last = info.length();
        info.length(last + 1);
        info[last].name = name.c_str();
        info[last].value = value.c_str();
    }
    session.SetAdditionalInfo(element, info);
    NameValues all;
    for (CORBA::ULong i = 0; i < info.length(); ++i) {
        all.emplace_back(info[i].name.in(), info[i].value.in());
    }
    Print(all);
    session.LogOut();
}

void Commands::Count() {
    NamingClient naming(orb_.orb(), settings_, caller_);
    OssSession session = LogIn(naming);
    const ExtensionClient extension(session, caller_);
    std::cout << extension.CountElements(managedElement::CS_AVAILABLE) << " elements available, "
              << extension.CountElements(managedElement::CS_UNAVAILABLE) << " unavailable" << std::endl;
    session.LogOut();
}

}  // namespace qv_oss
