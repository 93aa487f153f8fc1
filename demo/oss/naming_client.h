#pragma once

#include <orbsvcs/CosNamingC.h>

#include <string>
#include <vector>

#include "demo/oss/remote_call.h"
#include "demo/oss/settings.h"
#include "emsSessionFactoryC.h"

namespace qv_oss {

/// The naming service as an OSS uses it. Operations raise Problem.
class NamingClient {
  public:
    NamingClient(CORBA::ORB_ptr orb, const Settings& settings, const RemoteCaller& caller);

    /// What is bound, as a tree for the terminal.
    std::string Tree() const;

    /// The session factory of the EMS that the settings name, or of the only one that is bound.
    emsSessionFactory::EmsSessionFactory_I_ptr FindFactory();

    /// The name of the EMS that FindFactory found; empty when a file gave its reference.
    const std::string& ems() const { return ems_; }

    /// Where the naming service is looked for, for a person.
    std::string address() const;

  private:
    struct FactoryName {
        CosNaming::Name name;
        std::string ems;
    };

    CORBA::Object_var Reference() const;
    CosNaming::NamingContext_var Root() const;
    void DrawBelow(CosNaming::NamingContext_ptr context, const std::string& indent, int depth,
                   std::string& tree) const;
    void CollectFactories(CosNaming::NamingContext_ptr context, const CosNaming::Name& path,
                          std::vector<FactoryName>& found) const;
    emsSessionFactory::EmsSessionFactory_I_ptr Choose(CosNaming::NamingContext_ptr root,
                                                      const std::vector<FactoryName>& found);

    const CORBA::ORB_var orb_;
    const Settings& settings_;
    const RemoteCaller& caller_;
    std::string ems_;
};

}  // namespace qv_oss
