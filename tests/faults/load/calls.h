// The calls that an OSS of the campaign makes, one after the other.
#pragma once

#include <functional>
#include <string>

#include "accountManagerC.h"
#include "attributeManagerC.h"
#include "eventManagerC.h"
#include "managedElementManagerC.h"
#include "tests/faults/load/ems_client.h"

namespace qv_faults {

struct LoadSettings {
    std::string naming;
    std::string user;
    std::string password_file;
    std::string journal;
    std::string incarnation;  ///< part of each token, so that no two processes use the same
    double per_second = 10;
    unsigned events_per_second = 0;  ///< that the EMS is told to raise; 0: not told
    unsigned element = 1;            ///< number of the network element that is written to
};

/// Writes each call down before it is made and after it has ended. Calls that change something carry a token,
/// unique in the campaign, which the EMS's records and its audit show. Used by one thread.
///
/// Lines of the journal, each with the time in milliseconds at its end:
///
///   begin TOKEN OPERATION
///   end TOKEN OPERATION OUTCOME      ok, user:NAME or system:NAME:COMPLETED_…
///   told loss|cleared TIME ID
class Calls {
  public:
    Calls(CORBA::ORB_ptr orb, const LoadSettings& settings);

    /// Makes the next call of the round; logs in first where there is no session. False when a call failed.
    bool Next();

  private:
    bool Make(const std::string& operation, const std::function<void(const std::string& token)>& call);
    bool LogIn();
    bool CallOfRound(unsigned place);
    bool SetLabel();
    bool SetAttribute();
    bool ChangePassword();
    void LeaveSession();
    globaldefs::NamingAttributes_T Element() const;

    const LoadSettings& settings_;
    const Journal journal_;
    EmsClient client_;
    Passwords passwords_;
    std::uint64_t made_ = 0;
    unsigned place_ = 0;

    emsSession::EmsSession_I_var session_;
    managedElementManager::ManagedElementMgr_I_var elements_;
    attributeManager::AttributeMgr_I_var attributes_;
    accountManager::AccountMgr_I_var account_;
};

}  // namespace qv_faults
