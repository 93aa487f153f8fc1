#include "demo/oss/remote_call.h"

#include <orbsvcs/CosNamingC.h>

#include <cstdlib>
#include <iostream>

#include "demo/oss/text.h"
#include "globaldefsC.h"

namespace qv_oss {
namespace {

const char* const kReasons[] = {"not implemented",
                                "internal error",
                                "invalid input",
                                "object in use",
                                "invalid end point",
                                "no such object",
                                "time slot in use",
                                "protection effort not met",
                                "not in a valid state",
                                "unable to comply",
                                "no contact to the network element",
                                "capacity exceeded",
                                "access denied",
                                "too many open iterators",
                                "routing constraints not supported",
                                "label in use"};

std::string ReasonText(globaldefs::ExceptionType_T type) {
    const auto index = static_cast<std::size_t>(type);
    return index < std::size(kReasons) ? kReasons[index] : "reason " + std::to_string(index);
}

Problem FromEms(const globaldefs::ProcessingFailureException& e, const std::string& what) {
    const std::string reason = Printable(e.errorReason.in());
    switch (e.exceptionType) {
        case globaldefs::EXCPT_ACCESS_DENIED:
            if (reason.find("session limit") != std::string::npos) {
                return {kSessionLimit,
                        "the EMS has no room for another session (" + reason + "); try again later"};
            }
            return {kWrongPassword, "the EMS denies access: " + reason};
        case globaldefs::EXCPT_ENTITY_NOT_FOUND:
            return {kNotFound, "the EMS knows no " + reason};
        default:
            return {kUnexpected, what + " failed: " + ReasonText(e.exceptionType) + " (" + reason + ")"};
    }
}

bool IsContactLost(const CORBA::SystemException& e) {
    return CORBA::TRANSIENT::_downcast(&e) != nullptr || CORBA::COMM_FAILURE::_downcast(&e) != nullptr;
}

Problem FromNaming(const CORBA::SystemException& e) {
    if (IsContactLost(e)) {
        return {kNamingUnreachable,
                "the naming service can't be reached; is it running, and is --naming right?"};
    }
    if (CORBA::NO_PERMISSION::_downcast(&e) != nullptr) {
        return {kNoPermission,
                "no permission: the naming service may take calls by SSL alone (see --ssl-profile)"};
    }
    return {kNamingUnreachable, std::string("what answers there is no naming service (") + e._name() + ")"};
}

Problem FromNotification(const CORBA::SystemException& e) {
    if (IsContactLost(e)) {
        return {kNoEvents, "the notification service that the EMS names can't be reached; is it running?"};
    }
    if (CORBA::OBJECT_NOT_EXIST::_downcast(&e) != nullptr) {
        return {kNoEvents, "the notification service doesn't know the EMS's event channel any more"};
    }
    return {kNoEvents, std::string("the notification service failed (") + e._name() + ")"};
}

Problem FromOrb(Peer peer, const CORBA::SystemException& e, const std::string& what) {
    if (CORBA::TIMEOUT::_downcast(&e) != nullptr) {
        return {kTimeout, what + " did not answer in time"};
    }
    if (peer == Peer::kNamingService) {
        return FromNaming(e);
    }
    if (peer == Peer::kNotification) {
        return FromNotification(e);
    }
    if (CORBA::NO_PERMISSION::_downcast(&e) != nullptr) {
        return {
            kNoPermission,
            "no permission: the EMS's access list may lack this host, it may take calls by SSL alone (see "
            "--ssl-profile), or it is still starting"};
    }
    if (IsContactLost(e)) {
        return {kEmsUnreachable, "the EMS can't be reached; its name is bound, but it doesn't answer"};
    }
    if (CORBA::OBJECT_NOT_EXIST::_downcast(&e) != nullptr) {
        return peer == Peer::kSession
                   ? Problem(kSessionEnded, "the EMS has ended the session; log in again")
                   : Problem(kEmsUnreachable,
                             "the EMS answers, but its session factory is gone; is it stopping?");
    }
    return {kUnexpected, what + " failed: " + e._name()};
}

}  // namespace

void Complain(const std::string& sentence) {
    std::cout.flush();
    std::cerr << "qv_demo_oss: " << sentence << std::endl;
}

void Explain(Peer peer, const std::string& what) {
    try {
        throw;
    } catch (const globaldefs::ProcessingFailureException& e) {
        throw FromEms(e, what);
    } catch (const CosNaming::NamingContext::NotFound&) {
        throw Problem(kNotBound, "the name is no longer bound; try again");
    } catch (const CORBA::SystemException& e) {
        throw FromOrb(peer, e, what);
    } catch (const CORBA::UserException& e) {
        throw Problem(kUnexpected, what + " failed: " + e._name());
    }
}

void EndForTimeout(const std::string& what, std::chrono::milliseconds limit) {
    Complain(what + " did not answer within " + Seconds(limit) + " s (see --timeout)");
    std::_Exit(kTimeout);
}

}  // namespace qv_oss
