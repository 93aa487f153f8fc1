#include "demo/oss/naming_client.h"

#include <algorithm>
#include <fstream>

#include "demo/oss/text.h"

namespace qv_oss {
namespace {

constexpr const char* kFactoryKind = "EmsSessionFactory_I";
// Contexts may be bound in a circle.
constexpr int kDeepest = 16;
constexpr std::size_t kLongestReference = std::size_t{64} * 1024;

std::string ReadReference(const std::string& file) {
    std::ifstream in(file);
    std::string line(kLongestReference, '\0');
    in.read(line.data(), static_cast<std::streamsize>(line.size()));
    line.resize(static_cast<std::size_t>(in.gcount()));
    line.erase(std::min(line.find_first_of("\r\n"), line.size()));
    const std::size_t begin = line.find("IOR:");
    if (begin == std::string::npos) {
        throw Problem(kUsage, file + " holds no object reference (a line that begins with IOR:)");
    }
    return line.substr(begin);
}

std::string NameText(const CosNaming::NameComponent& component) {
    const std::string id = Printable(component.id.in());
    const std::string kind = Printable(component.kind.in());
    return kind.empty() ? id : id + " (" + kind + ")";
}

CosNaming::BindingList_var Bindings(CosNaming::NamingContext_ptr context) {
    constexpr CORBA::ULong kBatch = 1000;
    CosNaming::BindingList_var all;
    CosNaming::BindingIterator_var rest;
    context->list(kBatch, all.out(), rest.out());
    while (!CORBA::is_nil(rest.in())) {
        CosNaming::BindingList_var more;
        const bool any = rest->next_n(kBatch, more.out());
        const CORBA::ULong before = all->length();
        all->length(before + more->length());
        for (CORBA::ULong i = 0; i < more->length(); ++i) {
            all[before + i] = more[i];
        }
        if (!any) {
            rest->destroy();
            break;
        }
    }
    return all;
}

CosNaming::NamingContext_var Below(CosNaming::NamingContext_ptr context, const CosNaming::Binding& binding) {
    const CORBA::Object_var object = context->resolve(binding.binding_name);
    return CosNaming::NamingContext::_narrow(object.in());
}

}  // namespace

NamingClient::NamingClient(CORBA::ORB_ptr orb, const Settings& settings, const RemoteCaller& caller)
    : orb_(CORBA::ORB::_duplicate(orb)), settings_(settings), caller_(caller) {}

std::string NamingClient::address() const {
    return settings_.ior_file.empty() ? settings_.naming : settings_.ior_file;
}

CORBA::Object_var NamingClient::Reference() const {
    const std::string scheme = settings_.ssl_profile.empty() ? "iiop:" : "ssliop:";
    const std::string text = settings_.ior_file.empty()
                                 ? "corbaloc:" + scheme + settings_.naming + "/NameService"
                                 : ReadReference(settings_.ior_file);
    try {
        CORBA::Object_var object = orb_->string_to_object(text.c_str());
        if (!CORBA::is_nil(object.in())) {
            return object;
        }
    } catch (const CORBA::SystemException&) {
        // Told below: whatever the ORB found wrong with the text, it is no reference.
    }
    throw Problem(kUsage, settings_.ior_file.empty()
                              ? "--naming " + settings_.naming + " is not HOST:PORT"
                              : settings_.ior_file + " holds a damaged object reference");
}

CosNaming::NamingContext_var NamingClient::Root() const {
    const CORBA::Object_var object = Reference();
    return caller_.Run(Peer::kNamingService, "the naming service", [&] {
        CosNaming::NamingContext_var root = CosNaming::NamingContext::_narrow(object.in());
        if (CORBA::is_nil(root.in())) {
            throw Problem(kNamingUnreachable, "what answers at " + address() + " is no naming service");
        }
        return root;
    });
}

std::string NamingClient::Tree() const {
    const CosNaming::NamingContext_var root = Root();
    return caller_.Run(Peer::kNamingService, "the naming service", [&] {
        std::string tree;
        DrawBelow(root.in(), "", 0, tree);
        return tree;
    });
}

void NamingClient::DrawBelow(CosNaming::NamingContext_ptr context, const std::string& indent, int depth,
                             std::string& tree) const {
    const CosNaming::BindingList_var bindings = Bindings(context);
    for (CORBA::ULong i = 0; i < bindings->length(); ++i) {
        const CosNaming::Binding& binding = bindings.in()[i];
        const bool last = i + 1 == bindings->length();
        const bool is_context = binding.binding_type == CosNaming::ncontext;
        tree += indent + (last ? "└─ " : "├─ ") +
                NameText(binding.binding_name[binding.binding_name.length() - 1]) +
                (is_context ? "" : "  -> object") + "\n";
        if (is_context && depth < kDeepest) {
            const CosNaming::NamingContext_var below = Below(context, binding);
            if (!CORBA::is_nil(below.in())) {
                DrawBelow(below.in(), indent + (last ? "   " : "│  "), depth + 1, tree);
            }
        }
    }
}

emsSessionFactory::EmsSessionFactory_I_ptr NamingClient::FindFactory() {
    if (!settings_.ior_file.empty()) {
        const CORBA::Object_var object = Reference();
        const auto direct = caller_.Run(Peer::kFactory, "the object of " + settings_.ior_file, [&] {
            emsSessionFactory::EmsSessionFactory_I_var factory =
                emsSessionFactory::EmsSessionFactory_I::_narrow(object.in());
            return factory;
        });
        if (!CORBA::is_nil(direct.in())) {
            return emsSessionFactory::EmsSessionFactory_I::_duplicate(direct.in());
        }
    }
    const CosNaming::NamingContext_var root = Root();
    const auto found = caller_.Run(Peer::kNamingService, "the naming service", [&] {
        std::vector<FactoryName> factories;
        CollectFactories(root.in(), CosNaming::Name(), factories);
        return factories;
    });
    return Choose(root.in(), found);
}

void NamingClient::CollectFactories(CosNaming::NamingContext_ptr context, const CosNaming::Name& path,
                                    std::vector<FactoryName>& found) const {
    const CosNaming::BindingList_var bindings = Bindings(context);
    for (CORBA::ULong i = 0; i < bindings->length(); ++i) {
        const CosNaming::Binding& binding = bindings.in()[i];
        const CosNaming::NameComponent& own = binding.binding_name[binding.binding_name.length() - 1];
        CosNaming::Name name = path;
        name.length(path.length() + 1);
        name[path.length()] = own;
        if (binding.binding_type == CosNaming::nobject) {
            if (std::string(own.kind.in()) == kFactoryKind) {
                found.push_back({name, own.id.in()});
            }
        } else if (static_cast<int>(path.length()) < kDeepest) {
            const CosNaming::NamingContext_var below = Below(context, binding);
            if (!CORBA::is_nil(below.in())) {
                CollectFactories(below.in(), name, found);
            }
        }
    }
}

emsSessionFactory::EmsSessionFactory_I_ptr NamingClient::Choose(CosNaming::NamingContext_ptr root,
                                                                const std::vector<FactoryName>& found) {
    const FactoryName* chosen = nullptr;
    std::string names;
    for (const FactoryName& factory : found) {
        names += (names.empty() ? "" : ", ") + Printable(factory.ems);
        if (settings_.ems.empty() ? found.size() == 1 : factory.ems == settings_.ems) {
            chosen = &factory;
        }
    }
    if (found.empty()) {
        throw Problem(kNotBound, "no EMS is bound in the naming service at " + address() +
                                     "; its agent may not be running or not yet registered");
    }
    if (chosen == nullptr) {
        throw Problem(kNotBound, settings_.ems.empty()
                                     ? "several EMSs are bound; choose one with --ems: " + names
                                     : "no EMS named " + settings_.ems + " is bound; there is: " + names);
    }
    ems_ = chosen->ems;
    const CORBA::Object_var object = caller_.Run(Peer::kNamingService, "the naming service", [&] {
        return CORBA::Object_var(root->resolve(chosen->name));
    });
    const auto factory = caller_.Run(Peer::kFactory, "the EMS " + Printable(ems_), [&] {
        emsSessionFactory::EmsSessionFactory_I_var narrowed =
            emsSessionFactory::EmsSessionFactory_I::_narrow(object.in());
        return narrowed;
    });
    if (CORBA::is_nil(factory.in())) {
        throw Problem(kNotBound, "what is bound as " + Printable(ems_) + " is no session factory");
    }
    return emsSessionFactory::EmsSessionFactory_I::_duplicate(factory.in());
}

}  // namespace qv_oss
