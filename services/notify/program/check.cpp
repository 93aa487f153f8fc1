#include "services/notify/program/check.h"

#include <orbsvcs/CosNamingC.h>

#include <cstdio>
#include <exception>
#include <functional>

#include "orb/portability.h"
#include "services/common/listen_addresses.h"
#include "services/common/ssl_profile.h"
#include "services/common/start_error.h"
#include "services/common/text_file.h"
#include "services/notify/program/data_directory.h"
#include "services/notify/program/orb_start.h"

namespace qv_notify {

namespace {

class Findings {
  public:
    void Try(const std::string& what, const std::function<std::string()>& look) {
        try {
            std::printf("ok       %s: %s\n", what.c_str(), look().c_str());
        } catch (const std::exception& error) {
            std::printf("problem  %s: %s\n", what.c_str(), error.what());
            m_problem = true;
        }
    }
    bool Problem() const { return m_problem; }

  private:
    bool m_problem = false;
};

std::string LookAtEndpoint(const Settings& settings) {
    if (settings.port == 0) {
        throw qv_service::StartError(
            "-ORBEndpoint names no port, so persistent channels can't be offered and clients lose their "
            "references with "
            "each start. Give a port.");
    }
    qv_service::ListenAddresses(settings.host, settings.port);
    return settings.host + ":" + std::to_string(settings.port) + " is free";
}

std::string LookAtSsl(const Settings& settings) {
    const qv_service::SslProfile profile = qv_service::LoadSslProfile(settings.ssl_profile);
    if (*settings.ssl_port == 0) {
        throw qv_service::StartError(
            "ssl_port names no port, so persistent channels can't be offered and clients lose their "
            "references "
            "with each start. Give a port.");
    }
    qv_service::ListenAddresses(settings.host, *settings.ssl_port);
    return settings.host + ":" + std::to_string(*settings.ssl_port) + " is free, and " +
           settings.ssl_profile + " can be used; requests in clear are " +
           (profile.settings.no_protection ? "served too" : "refused");
}

std::string LookAtStore(const Settings& settings) {
    const std::filesystem::path file = PrepareStoreFile(ChooseDataDirectory(settings));
    Store store(file.string());
    return file.string() + " can be used; it holds " + std::to_string(store.Objects().size()) +
           " objects and " + std::to_string(store.Events().size()) + " events";
}

std::string LookAtNaming(const Settings& settings) {
    try {
        const CORBA::ORB_var orb = InitOrb(settings);
        const CORBA::Object_var object = orb->resolve_initial_references("NameService");
        const CosNaming::NamingContext_var root = CosNaming::NamingContext::_narrow(object.in());
        if (CORBA::is_nil(root.in())) {
            throw CORBA::INV_OBJREF();
        }
        return "answers";
    } catch (const CORBA::Exception& exception) {
        throw qv_service::StartError(
            "it does not answer (" + qv_orb::ExceptionText(exception) +
            "). Start it, or correct -ORBInitRef; the service starts without it and registers "
            "itself later.");
    }
}

}  // namespace

int CheckSetup(const Settings& settings) {
    Findings findings;
    findings.Try("end point", [&] { return LookAtEndpoint(settings); });
    if (settings.ssl_port) {
        findings.Try("SSL", [&] { return LookAtSsl(settings); });
    }
    if (HasLastingAddress(settings)) {
        findings.Try("store", [&] { return LookAtStore(settings); });
    }
    if (!settings.ior_file.empty()) {
        findings.Try("reference file", [&] {
            qv_service::RequireWritable(settings.ior_file, "the reference of the channel factory");
            return settings.ior_file + " can be written";
        });
    }
    if (settings.register_name) {
        findings.Try("naming service", [&] { return LookAtNaming(settings); });
    }
    return findings.Problem() ? qv_service::kExitFailure : 0;
}

}  // namespace qv_notify
