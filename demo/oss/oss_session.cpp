#include "demo/oss/oss_session.h"

#include <chrono>
#include <thread>

#include "demo/oss/text.h"
#include "tools/secrets/wiper.h"

namespace qv_oss {
namespace {

constexpr const char* kTheEms = "the EMS";
constexpr std::chrono::milliseconds kPause{300};

bool IsBusy(const globaldefs::ProcessingFailureException& e) {
    return e.exceptionType == globaldefs::EXCPT_UNABLE_TO_COMPLY;
}

}  // namespace

OssSession::OssSession(const OssOrb& orb, const RemoteCaller& caller,
                       emsSessionFactory::EmsSessionFactory_I_ptr factory, const std::string& user,
                       std::string& password)
    : caller_(caller), servant_(new NmsSessionServant), client_(nullptr) {
    const qv_secrets::Wiper wiper(password);
    MakeClient(orb);
    LogIn(factory, user, password);
    client_->SetAssociated(session_.in());
}

OssSession::~OssSession() {
    try {
        LogOut();
    } catch (const Problem& problem) {
        Complain(std::string("the session could not be ended: ") + problem.what());
    }
}

void OssSession::MakeClient(const OssOrb& orb) {
    client_ = dynamic_cast<NmsSessionServant*>(servant_.in());
    const PortableServer::ObjectId_var id = orb.poa()->activate_object(client_);
    const CORBA::Object_var object = orb.poa()->id_to_reference(id.in());
    client_reference_ = nmsSession::NmsSession_I::_narrow(object.in());
}

void OssSession::LogIn(emsSessionFactory::EmsSessionFactory_I_ptr factory, const std::string& user,
                       const std::string& password) {
    const auto end = std::chrono::steady_clock::now() + caller_.limit();
    session_ = caller_.Run(Peer::kFactory, kTheEms, [&] {
        for (;;) {
            try {
                emsSession::EmsSession_I_var session;
                factory->getEmsSession(user.c_str(), password.c_str(), client_reference_.in(), session.out());
                return session;
            } catch (const globaldefs::ProcessingFailureException& e) {
                if (!IsBusy(e) || std::chrono::steady_clock::now() + kPause >= end) {
                    throw;
                }
            }
            std::this_thread::sleep_for(kPause);
        }
    });
    if (CORBA::is_nil(session_.in())) {
        throw Problem(kUnexpected, "the EMS accepted the login and gave no session");
    }
}

void OssSession::LogOut() {
    if (CORBA::is_nil(session_.in())) {
        return;
    }
    const emsSession::EmsSession_I_var session = session_._retn();
    caller_.Run(Peer::kSession, kTheEms, [&] { session->endSession(); });
}

void OssSession::Ping() const {
    caller_.Run(Peer::kSession, kTheEms, [&] { session_->ping(); });
}

std::vector<std::string> OssSession::Managers() const {
    return caller_.Run(Peer::kSession, kTheEms, [&] {
        emsSession::EmsSession_I::managerNames_T_var names;
        session_->getSupportedManagers(names.out());
        std::vector<std::string> result;
        for (CORBA::ULong i = 0; i < names->length(); ++i) {
            result.emplace_back(names[i]);
        }
        return result;
    });
}

common::Common_I_var OssSession::Manager(const char* name) const {
    return caller_.Run(Peer::kSession, kTheEms, [&] {
        common::Common_I_var manager;
        session_->getManager(name, manager.out());
        return manager;
    });
}

CosNotifyChannelAdmin::EventChannel_var OssSession::EventChannel() const {
    return caller_.Run(Peer::kSession, kTheEms, [&] {
        CosNotifyChannelAdmin::EventChannel_var channel;
        try {
            session_->getEventChannel(channel.out());
        } catch (const globaldefs::ProcessingFailureException& e) {
            throw Problem(kNoEvents, "the EMS has no event channel: " + Printable(e.errorReason.in()));
        }
        if (CORBA::is_nil(channel.in())) {
            throw Problem(kNoEvents, "the EMS gave no event channel");
        }
        return channel;
    });
}

managedElementManager::ManagedElementMgr_I_var OssSession::ElementManager() const {
    const common::Common_I_var manager = Manager("ManagedElement");
    return caller_.Run(Peer::kSession, kTheEms, [&] {
        managedElementManager::ManagedElementMgr_I_var narrowed =
            managedElementManager::ManagedElementMgr_I::_narrow(manager.in());
        if (CORBA::is_nil(narrowed.in())) {
            throw Problem(kUnexpected, "the EMS's manager of elements is none");
        }
        return narrowed;
    });
}

emsMgr::EMS_T_var OssSession::Ems() const {
    const common::Common_I_var manager = Manager("EMS");
    return caller_.Run(Peer::kSession, kTheEms, [&] {
        const emsMgr::EMSMgr_I_var ems = emsMgr::EMSMgr_I::_narrow(manager.in());
        if (CORBA::is_nil(ems.in())) {
            throw Problem(kUnexpected, "the EMS's manager of itself is none");
        }
        emsMgr::EMS_T_var info;
        ems->getEMS(info.out());
        return info;
    });
}

void OssSession::ReadElements(unsigned page_size,
                              const std::function<void(const Page& page, std::size_t all)>& take) const {
    const auto manager = ElementManager();
    managedElement::ManagedElementIterator_I_var rest;
    managedElement::ManagedElementList_T_var page;
    std::size_t all = 0;
    caller_.Run(Peer::kSession, kTheEms, [&] {
        manager->getAllManagedElements(page_size, page.out(), rest.out());
        all = CORBA::is_nil(rest.in()) ? page->length() : rest->getLength();
    });
    take(page.in(), all);
    bool more = !CORBA::is_nil(rest.in());
    while (more) {
        more = caller_.Run(Peer::kSession, kTheEms,
                           [&] { return static_cast<bool>(rest->next_n(page_size, page.out())); });
        take(page.in(), all);
    }
}

managedElement::ManagedElement_T_var OssSession::Element(const globaldefs::NamingAttributes_T& name) const {
    const auto manager = ElementManager();
    return caller_.Run(Peer::kSession, kTheEms, [&] {
        managedElement::ManagedElement_T_var element;
        manager->getManagedElement(name, element.out());
        return element;
    });
}

void OssSession::SetAdditionalInfo(const globaldefs::NamingAttributes_T& element,
                                   globaldefs::NVSList_T& info) const {
    const auto manager = ElementManager();
    caller_.Run(Peer::kSession, kTheEms, [&] { manager->setAdditionalInfo(element, info); });
}

globaldefs::NamingAttributes_T ElementName(const std::string& ems, const std::string& element) {
    globaldefs::NamingAttributes_T name;
    name.length(2);
    name[0].name = "EMS";
    name[0].value = ems.c_str();
    name[1].name = "ManagedElement";
    name[1].value = element.c_str();
    return name;
}

}  // namespace qv_oss
