#pragma once

#include <memory>
#include <string>
#include <vector>

#include "commonS.h"
#include "demo/agent/ems.h"

namespace qv_demo {

/// What the managers of this EMS have in common: the operations of common::Common_I, which change an element
/// of the inventory. Changes last until the agent ends.
class CommonOperations {
  public:
    CommonOperations(const Ems& ems, SessionId session) : ems_(ems), session_(session) {}

  protected:
    /// To be called first by each operation. Raises CORBA::OBJECT_NOT_EXIST when the session has ended.
    void Touch() const { ems_.sessions.Touch(session_); }

    const Ems& ems() const { return ems_; }

    void SetNativeName(const globaldefs::NamingAttributes_T& name, const char* native_name) const;
    void SetUserLabel(const globaldefs::NamingAttributes_T& name, const char* label, bool unique) const;
    void SetOwner(const globaldefs::NamingAttributes_T& name, const char* owner) const;
    void SetAdditionalInfo(const globaldefs::NamingAttributes_T& name, globaldefs::NVSList_T& info) const;

    /// Raises CORBA::OBJECT_NOT_EXIST when it has ended.
    std::shared_ptr<const Session> OwnSession() const;

    /// Raises what an OSS is told whose changes to an element weren't kept.
    static void RequireKept(Attributes::SetResult result, const std::string& entry,
                            const std::string& entries);

    /// A list that says of the operations of common::Common_I, and of these, that they are supported; the
    /// caller owns it.
    static common::CapabilityList_T* CommonCapabilitiesAnd(const std::vector<std::string>& operations);

  private:
    const Ems& ems_;
    const SessionId session_;
};

/// Gives a manager's skeleton the operations of common::Common_I. `Skeleton` is POA_…::…Mgr_I.
template <class Skeleton>
class CommonServant : public Skeleton, protected CommonOperations {
  public:
    using CommonOperations::CommonOperations;

    void setNativeEMSName(const globaldefs::NamingAttributes_T& name, const char* native_name) override {
        Touch();
        SetNativeName(name, native_name);
    }
    void setUserLabel(const globaldefs::NamingAttributes_T& name, const char* label,
                      CORBA::Boolean unique) override {
        Touch();
        SetUserLabel(name, label, unique);
    }
    void setOwner(const globaldefs::NamingAttributes_T& name, const char* owner) override {
        Touch();
        SetOwner(name, owner);
    }
    void setAdditionalInfo(const globaldefs::NamingAttributes_T& name, globaldefs::NVSList_T& info) override {
        Touch();
        SetAdditionalInfo(name, info);
    }
};

}  // namespace qv_demo
