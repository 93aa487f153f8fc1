#include "demo/oss/commands.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <thread>

#include "demo/oss/text.h"

namespace qv_oss {
namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// A line that is written over again and again, for a person who waits; nothing where nobody watches.
class Progress {
  public:
    void Show(std::size_t done, std::size_t all) {
        if (watched_ && done < all) {
            std::cerr << "\r" << done << " of " << all << " elements " << std::flush;
            shown_ = true;
        }
    }
    void Clear() {
        if (shown_) {
            std::cerr << "\r\033[K" << std::flush;
            shown_ = false;
        }
    }

  private:
    const bool watched_ = isatty(STDERR_FILENO) == 1;
    bool shown_ = false;
};

std::string OwnName(const globaldefs::NamingAttributes_T& name) {
    return name.length() == 0 ? "" : name[name.length() - 1].value.in();
}

std::string State(const managedElement::ManagedElement_T& element) {
    const bool available = element.communicationState == managedElement::CS_AVAILABLE;
    return std::string(available ? "available" : "UNAVAILABLE") +
           (element.emsInSyncState ? "" : ", not in sync");
}

void PrintField(const std::string& name, const std::string& value) {
    constexpr std::size_t kWidth = 16;
    std::cout << "  " << name << std::string(name.size() < kWidth ? kWidth - name.size() : 1, ' ')
              << Printable(value) << "\n";
}

void PrintPairs(const globaldefs::NVSList_T& pairs) {
    for (CORBA::ULong i = 0; i < pairs.length(); ++i) {
        PrintField(Printable(pairs[i].name.in()), pairs[i].value.in());
    }
}

void PrintElement(const managedElement::ManagedElement_T& element) {
    std::cout << Printable(OwnName(element.name)) << "\n";
    PrintField("label", element.userLabel.in());
    PrintField("native name", element.nativeEMSName.in());
    PrintField("product", element.productName.in());
    PrintField("version", element.version.in());
    PrintField("location", element.location.in());
    PrintField("owner", element.owner.in());
    PrintField("state", State(element));
    std::string rates;
    for (CORBA::ULong i = 0; i < element.supportedRates.length(); ++i) {
        rates += (i == 0 ? "" : " ") + std::to_string(element.supportedRates[i]);
    }
    PrintField("layer rates", rates);
    PrintPairs(element.additionalInfo);
}

std::string Milliseconds(steady_clock::duration time) {
    const long us = duration_cast<microseconds>(time).count();
    return std::to_string(us / 1000) + "." + std::to_string(1000 + us % 1000).substr(1) + " ms";
}

}  // namespace

Commands::Commands(const OssOrb& orb, const Settings& settings)
    : orb_(orb), settings_(settings), caller_(settings.timeout) {}

void Commands::Run() {
    switch (settings_.command) {
        case Command::kBrowse:
            return Browse();
        case Command::kLogin:
            return LogInAndOut();
        case Command::kPing:
            return Ping();
        case Command::kList:
            return List();
        case Command::kShow:
            return Show();
        case Command::kSession:
            return WholeSession();
        case Command::kChangePassword:
            return ChangePassword();
        case Command::kAnnotate:
            return Annotate();
        case Command::kSetInfo:
            return SetInfo();
        case Command::kCount:
            return Count();
        case Command::kEvents:
            return Events();
        case Command::kRaise:
            return Raise();
    }
}

OssSession Commands::LogIn(NamingClient& naming) {
    const auto factory = emsSessionFactory::EmsSessionFactory_I_var(naming.FindFactory());
    std::string password = ReadPassword(settings_);
    return OssSession(orb_, caller_, factory.in(), settings_.user, password);
}

std::string Commands::EmsOf(const OssSession& session, const NamingClient& naming) {
    return naming.ems().empty() ? OwnName(session.Ems()->name) : naming.ems();
}

void Commands::Browse() {
    const NamingClient naming(orb_.orb(), settings_, caller_);
    const std::string tree = naming.Tree();
    std::cout << "naming service " << naming.address() << "\n"
              << (tree.empty() ? "(nothing is bound)\n" : tree);
}

void Commands::PrintEms(const OssSession& session) {
    const emsMgr::EMS_T_var ems = session.Ems();
    std::cout << "EMS " << Printable(OwnName(ems->name)) << "\n";
    PrintField("label", ems->userLabel.in());
    PrintField("type", ems->type.in());
    PrintField("version", ems->emsVersion.in());
    PrintField("owner", ems->owner.in());
    PrintPairs(ems->additionalInfo);
    std::string managers;
    for (const std::string& name : session.Managers()) {
        managers += (managers.empty() ? "" : ", ") + name;
    }
    PrintField("managers", managers);
}

void Commands::LogInAndOut() {
    NamingClient naming(orb_.orb(), settings_, caller_);
    OssSession session = LogIn(naming);
    std::cout << "logged in as " << settings_.user << std::endl;
    PrintEms(session);
    std::cout.flush();
    std::this_thread::sleep_for(milliseconds(settings_.hold_ms));
    session.Ping();
    session.LogOut();
    std::cout << "logged out" << std::endl;
}

void Commands::Ping() {
    constexpr int kPings = 5;
    NamingClient naming(orb_.orb(), settings_, caller_);
    OssSession session = LogIn(naming);
    for (int i = 1; i <= kPings; ++i) {
        const auto start = steady_clock::now();
        session.Ping();
        std::cout << "ping " << i << ": " << Milliseconds(steady_clock::now() - start) << std::endl;
    }
    session.LogOut();
}

void Commands::PrintElements(const OssSession& session) {
    Table table({"NAME", "LABEL", "PRODUCT", "VERSION", "LOCATION", "STATE"});
    Progress progress;
    std::size_t elements = 0;
    std::size_t replies = 0;
    const auto start = steady_clock::now();
    session.ReadElements(settings_.page, [&](const OssSession::Page& page, std::size_t all) {
        for (CORBA::ULong i = 0; i < page.length(); ++i) {
            const managedElement::ManagedElement_T& element = page[i];
            table.Add({OwnName(element.name), element.userLabel.in(), element.productName.in(),
                       element.version.in(), element.location.in(), State(element)});
        }
        elements += page.length();
        ++replies;
        progress.Clear();
        std::cout << table.Take() << std::flush;
        progress.Show(elements, all);
    });
    progress.Clear();
    const auto time = duration_cast<milliseconds>(steady_clock::now() - start);
    std::cout << elements << " elements in " << replies << (replies == 1 ? " reply" : " replies") << ", "
              << Seconds(time) << " s" << std::endl;
}

void Commands::List() {
    NamingClient naming(orb_.orb(), settings_, caller_);
    OssSession session = LogIn(naming);
    PrintElements(session);
    session.LogOut();
}

void Commands::Show() {
    NamingClient naming(orb_.orb(), settings_, caller_);
    OssSession session = LogIn(naming);
    const managedElement::ManagedElement_T_var element =
        session.Element(ElementName(EmsOf(session, naming), settings_.element));
    PrintElement(element.in());
    session.LogOut();
}

void Commands::WholeSession() {
    NamingClient naming(orb_.orb(), settings_, caller_);
    std::cout << "1. looking for an EMS in the naming service " << naming.address() << std::endl;
    const auto factory = emsSessionFactory::EmsSessionFactory_I_var(naming.FindFactory());
    std::cout << "   found " << Printable(naming.ems()) << "\n2. logging in as " << settings_.user
              << std::endl;
    std::string password = ReadPassword(settings_);
    OssSession session(orb_, caller_, factory.in(), settings_.user, password);
    const auto start = steady_clock::now();
    session.Ping();
    std::cout << "   logged in; the EMS answers a ping in " << Milliseconds(steady_clock::now() - start)
              << "\n3. asking who it is" << std::endl;
    PrintEms(session);
    std::cout << "4. reading the inventory, " << settings_.page << " elements per reply" << std::endl;
    PrintElements(session);
    session.LogOut();
    std::cout << "5. logged out" << std::endl;
}

}  // namespace qv_oss
