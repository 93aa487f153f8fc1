#include "tests/faults/load/calls.h"

namespace qv_faults {
namespace {

constexpr unsigned kRound = 120;  // calls until the round begins again; one of them changes the password
constexpr unsigned kMostEvents = 1000000;

std::string ElementId(unsigned number) {
    const std::string digits = std::to_string(number);
    return "NE-" + std::string(digits.size() < 5 ? 5 - digits.size() : 0, '0') + digits;
}

}  // namespace

Calls::Calls(CORBA::ORB_ptr orb, const LoadSettings& settings)
    : settings_(settings),
      journal_(settings.journal),
      client_(orb, settings.naming, journal_),
      passwords_(Passwords::Read(settings.password_file)) {}

bool Calls::Next() {
    if (CORBA::is_nil(session_.in()) && !LogIn()) {
        return false;
    }
    place_ = (place_ + 1) % kRound;
    return CallOfRound(place_);
}

bool Calls::Make(const std::string& operation, const std::function<void(const std::string& token)>& call) {
    const std::string token = settings_.user + "." + settings_.incarnation + "." + std::to_string(++made_);
    const std::string words = token + " " + operation + " ";
    journal_.Note("begin " + token + " " + operation);
    try {
        call(token);
        journal_.Note("end " + words + "ok");
        return true;
    } catch (const CORBA::UserException& exception) {
        journal_.Note("end " + words + OutcomeOf(exception));
    } catch (const CORBA::Exception& exception) {
        journal_.Note("end " + words + OutcomeOf(exception));
        LeaveSession();
    }
    return false;
}

bool Calls::LogIn() {
    const bool done = Make("getEmsSession", [this](const std::string&) {
        const emsSession::EmsSession_I_var session = client_.LogIn(settings_.user, passwords_.current);
        elements_ = ManagerOf<managedElementManager::ManagedElementMgr_I>(session.in(), "ManagedElement");
        attributes_ = ManagerOf<attributeManager::AttributeMgr_I>(session.in(), "Attribute");
        account_ = ManagerOf<accountManager::AccountMgr_I>(session.in(), "Account");
        session_ = session;
    });
    if (!done) {
        passwords_.Swap();
        return false;
    }
    if (settings_.events_per_second > 0) {
        // Refused where there are plenty to be raised already.
        Make("raiseEvents", [this](const std::string&) {
            const auto events = ManagerOf<eventManager::EventMgr_I>(session_.in(), "Event");
            events->raiseEvents(kMostEvents, settings_.events_per_second);
        });
    }
    return !CORBA::is_nil(session_.in());
}

void Calls::LeaveSession() {
    session_ = emsSession::EmsSession_I::_nil();
}

globaldefs::NamingAttributes_T Calls::Element() const {
    globaldefs::NamingAttributes_T name;
    name.length(2);
    name[0].name = CORBA::string_dup("EMS");
    name[0].value = CORBA::string_dup(kEmsName);
    name[1].name = CORBA::string_dup("ManagedElement");
    name[1].value = CORBA::string_dup(ElementId(settings_.element).c_str());
    return name;
}

bool Calls::SetLabel() {
    return Make("setUserLabel", [this](const std::string& token) {
        elements_->setUserLabel(Element(), token.c_str(), false);
    });
}

bool Calls::SetAttribute() {
    return Make("setAttributeValue", [this](const std::string& token) {
        CORBA::Any value;
        value <<= token.c_str();
        attributes_->setAttributeValue(Element(), "token", value);
    });
}

bool Calls::ChangePassword() {
    const bool done = Make("modifyPassword", [this](const std::string&) {
        account_->modifyPassword(settings_.user.c_str(), passwords_.current.c_str(),
                                 passwords_.other.c_str());
    });
    if (done) {
        passwords_.Swap();
    }
    return done;
}

bool Calls::CallOfRound(unsigned place) {
    if (place == kRound / 2) {
        return ChangePassword();
    }
    switch (place % 6) {
        case 0:
            return SetLabel();
        case 1:
            return Make("ping", [this](const std::string&) { session_->ping(); });
        case 2:
            return SetAttribute();
        case 3:
            return Make("resolve", [this](const std::string&) { client_.Resolve(); });
        case 4:
            return Make("getManagedElement", [this](const std::string&) {
                managedElement::ManagedElement_T_var element;
                elements_->getManagedElement(Element(), element.out());
            });
        default:
            return SetAttribute();
    }
}

}  // namespace qv_faults
