#include "agent/corbabaseagentconfig.h"
#include "logging/corbalogutil.h"
#include "orb/portability.h"

namespace NS_CORBA {

namespace {

void SetComponent(CosNaming::Name& name, CORBA::ULong index, const char* id, const char* kind) {
    name[index].id = CORBA::string_dup(id);
    name[index].kind = CORBA::string_dup(kind);
}

CosNaming::Name FirstComponents(const CosNaming::Name& name, CORBA::ULong count) {
    CosNaming::Name first(count);
    first.length(count);
    for (CORBA::ULong i = 0; i < count; ++i) {
        SetComponent(first, i, name[i].id.in(), name[i].kind.in());
    }
    return first;
}

/// Makes the contexts on the way to `name`, those that exist aside.
bool BindContexts(CosNaming::NamingContext_ptr context, const CosNaming::Name& name) {
    for (CORBA::ULong count = 1; count < name.length(); ++count) {
        try {
            CosNaming::NamingContext_var made = context->bind_new_context(FirstComponents(name, count));
        } catch (CosNaming::NamingContext::AlreadyBound&) {
            continue;  // as on every restart
        } catch (CORBA::Exception& ex) {
            TA_POS;
            TaTrace(
                "[CorbaBaseAgentConfig::RegistName] Unknown exception received during bind_new_context!%s",
                qv_orb::ExceptionText(ex).c_str());
            return false;
        }
    }
    return true;
}

bool Rebind(CosNaming::NamingContext_ptr context, const CosNaming::Name& name, CORBA::Object* object) {
    try {
        context->rebind(name, object);
        return true;
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaTrace("[CorbaBaseAgentConfig::RegistName] Unknown exception received during rebind name!%s",
                qv_orb::ExceptionText(ex).c_str());
        return false;
    }
}

}  // namespace

bool CorbaBaseAgentConfig::GetNamingService(TAO_Objref_Out_T<CosNaming::NamingContext> context) {
    if (CORBA::is_nil(m_ORB.in())) {
        TA_POS;
        TaTrace("[CorbaBaseAgentConfig::GetNamingService] ORB is Nil!");
        return false;
    }
    CORBA::Object_var object;
    if (m_nsIorFile != nullptr) {
        if (Read_ior(m_nsIorFile, object) != 0) {
            TA_POS;
            TaTrace(
                "[CorbaBaseAgentConfig::GetNamingService] Error occured during getting namingservice object "
                "ref from file!");
            return false;
        }
    }
    try {
        if (m_nsIorFile == nullptr) {
            const bool ssl = GetSSLMode() != 0;
            const std::string address =
                (ssl ? "corbaloc:ssliop:" : "corbaloc:iiop:") + m_NamingServiceHost + ":" +
                std::to_string(ssl ? m_NamingServiceSSLPort : m_NamingServicePort) + "/NameService";
            object = m_ORB->string_to_object(address.c_str());
        }
        if (CORBA::is_nil(object.in())) {
            return false;
        }
        context = CosNaming::NamingContext::_narrow(object.in());
        return true;
    } catch (CORBA::Exception&) {
        return false;
    }
}

bool CorbaBaseAgentConfig::GetRef(const CosNaming::Name& name, TAO_Pseudo_Out_T<CORBA::Object> object) {
    CosNaming::NamingContext_var context;
    if (!GetNamingService(context)) {
        return false;
    }
    try {
        CORBA::Object_var found = context->resolve(name);
        const bool any = !CORBA::is_nil(found.in());
        object = found._retn();
        return any;
    } catch (CosNaming::NamingContext::NotFound&) {
        TA_POS;
        TaTrace("Exception CosNaming::NamingContext::NotFound received!\n");
    } catch (CosNaming::NamingContext::CannotProceed&) {
        TA_POS;
        TaTrace("Exception CosNaming::NamingContext::CannotProceed received!\n");
    } catch (CosNaming::NamingContext::InvalidName&) {
        TA_POS;
        TaTrace("Exception CosNaming::NamingContext::InvalidName received!\n");
    } catch (CORBA::Exception&) {
        TA_POS;
        TaTrace("Unknown exception received during resolve name!\n");
    }
    return false;
}

bool CorbaBaseAgentConfig::RegistName(const CosNaming::Name& name, CORBA::Object* object) {
    if (name.length() == 0 || CORBA::is_nil(object)) {
        return false;
    }
    CosNaming::NamingContext_var context;
    if (!GetNamingService(context) || !BindContexts(context.in(), name)) {
        return false;
    }
    try {
        context->bind(name, object);
        return true;
    } catch (CosNaming::NamingContext::AlreadyBound&) {
        return Rebind(context.in(), name, object);
    } catch (CORBA::Exception& ex) {
        TA_POS;
        TaTrace("[CorbaBaseAgentConfig::RegistName] Unknown exception received during bind name!%s",
                qv_orb::ExceptionText(ex).c_str());
        return false;
    }
}

bool CorbaBaseAgentConfig::UnRegistName(const CosNaming::Name& name) {
    CosNaming::NamingContext_var context;
    if (!GetNamingService(context)) {
        return false;
    }
    CosNaming::Name rest(name);
    try {
        while (rest.length() > 0) {
            context->unbind(rest);
            rest.length(rest.length() - 1);
        }
        return true;
    } catch (CORBA::Exception&) {
        TA_POS;
        TaTrace("Unknown exception received during unbind name!\n");
        return false;
    }
}

void CorbaBaseAgentConfig::ConstructEmsFactoryName(CosNaming::Name& name) {
    name.length(5);
    SetComponent(name, 0, "TMF_MTNM", "Class");
    SetComponent(name, 1, "ZORVEX", "Vendor");
    SetComponent(name, 2, m_EmsName.c_str(), "EmsInstance");
    SetComponent(name, 3, m_IDLVersion.c_str(), "Version");
    SetComponent(name, 4, m_EmsName.c_str(), "EmsSessionFactory_I");
}

bool CorbaBaseAgentConfig::RegistEMSFactoryName(CORBA::Object* object) {
    if (ior_output_file_ != nullptr) {
        Write_ior(ior_output_file_, object);
    }
    CosNaming::Name name;
    ConstructEmsFactoryName(name);
    return RegistName(name, object);
}

bool CorbaBaseAgentConfig::UnRegistEMSFactoryName() {
    CosNaming::Name name;
    ConstructEmsFactoryName(name);
    return UnRegistName(name);
}

void CorbaBaseAgentConfig::GetEmsAdditionalInfo(std::string& location, std::string& address) {
    location = m_EmsLocation;
    address =
        m_CorbaAgentHost + ":" + std::to_string(m_SSLMode == 1 ? m_CorbaAgentSSLPort : m_CorbaAgentPort);
}

}  // namespace NS_CORBA
