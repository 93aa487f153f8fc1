#include "outcome.h"

#include <cstring>
#include <new>

#include "minor_codes.h"
#include "orb_internals.h"

namespace qv_orb {
namespace {

bool Declares(omniCallDescriptor& call, const CORBA::UserException& exception) {
    int size = 0;
    const char* id = exception._NP_repoId(&size);
    for (int i = 0; i < call.n_user_excns(); ++i) {
        if (std::strcmp(call.user_excns()[i], id) == 0) {
            return true;
        }
    }
    return false;
}

}  // namespace

void Outcome::Set(const CORBA::Exception& exception, PortableInterceptor::ReplyStatus status) {
    exception_.reset(CORBA::Exception::_duplicate(&exception));
    status_ = status;
    forwarded_ = false;
    forward_ = CORBA::Object::_nil();
}

void Outcome::SetForward(CORBA::Object_ptr target) {
    exception_.reset();
    status_ = PortableInterceptor::LOCATION_FORWARD;
    forwarded_ = true;
    forward_ = CORBA::Object::_duplicate(target);
}

void Outcome::SetUnknown(CORBA::ULong minor) {
    Set(CORBA::UNKNOWN(minor, CORBA::COMPLETED_MAYBE), PortableInterceptor::SYSTEM_EXCEPTION);
}

void Outcome::TakeFromServant(omniCallDescriptor& call) {
    try {
        throw;
    } catch (omniORB::LOCATION_FORWARD& forward) {
        CORBA::Object_var target = forward.get_obj();
        SetForward(target);
    } catch (const CORBA::SystemException& ex) {
        Set(ex, PortableInterceptor::SYSTEM_EXCEPTION);
    } catch (const CORBA::UserException& ex) {
        if (Declares(call, ex)) {
            Set(ex, PortableInterceptor::USER_EXCEPTION);
        } else {
            SetUnknown(kUnlistedUserException);
        }
    } catch (const std::bad_alloc&) {
        Set(CORBA::NO_MEMORY(0, CORBA::COMPLETED_MAYBE), PortableInterceptor::SYSTEM_EXCEPTION);
    } catch (...) {
        SetUnknown(0);
    }
}

void Outcome::TakeFromInterceptor(bool may_forward) {
    try {
        throw;
    } catch (const PortableInterceptor::ForwardRequest& ex) {
        if (may_forward) {
            SetForward(ex.forward);
        } else {
            SetUnknown(kUnlistedUserException);
        }
    } catch (const CORBA::SystemException& ex) {
        Set(ex, PortableInterceptor::SYSTEM_EXCEPTION);
    } catch (const CORBA::UserException&) {
        SetUnknown(kUnlistedUserException);
    } catch (const std::bad_alloc&) {
        Set(CORBA::NO_MEMORY(0, CORBA::COMPLETED_MAYBE), PortableInterceptor::SYSTEM_EXCEPTION);
    } catch (...) {
        SetUnknown(0);
    }
}

void Outcome::Raise() const {
    if (forwarded_) {
        throw omniORB::LOCATION_FORWARD(CORBA::Object::_duplicate(forward_), false);
    }
    if (exception_ != nullptr) {
        exception_->_raise();
    }
}

}  // namespace qv_orb
