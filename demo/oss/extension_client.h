#pragma once

#include <string>
#include <utility>
#include <vector>

#include "accountManagerC.h"
#include "attributeManagerC.h"
#include "demo/oss/oss_session.h"
#include "eventManagerC.h"

namespace qv_oss {

using NameValues = std::vector<std::pair<std::string, std::string>>;

/// The managers of a session that only this demo's EMS has. Operations raise Problem.
class ExtensionClient {
  public:
    ExtensionClient(const OssSession& session, const RemoteCaller& caller)
        : session_(session), caller_(caller) {}

    /// Where the EMS is too busy it is tried again, for as long as one call may take.
    void ChangePassword(const std::string& user, const std::string& old_password,
                        const std::string& new_password) const;

    /// Sets attributes of an element: one as an Any, several as a list of structures. A value that reads as a
    /// number or as true or false becomes one.
    void Annotate(const globaldefs::NamingAttributes_T& element, const NameValues& attributes) const;

    /// The attributes of an element with their values as texts.
    NameValues Attributes(const globaldefs::NamingAttributes_T& element) const;

    /// How many elements are in that state.
    unsigned CountElements(managedElement::CommunicationState_T state) const;

    /// Lets the EMS raise so many events, `per_second` in a second; doesn't wait for them.
    void RaiseEvents(unsigned count, unsigned per_second) const;

  private:
    attributeManager::AttributeMgr_I_var AttributeManager() const;

    const OssSession& session_;
    const RemoteCaller& caller_;
};

}  // namespace qv_oss
