#pragma once

#include "accountManagerS.h"
#include "demo/agent/common_servant.h"

namespace qv_demo {

/// The manager "Account": what the user of the session may do about its own account.
class AccountManager : public CommonServant<POA_accountManager::AccountMgr_I> {
  public:
    using CommonServant::CommonServant;

    void getCapabilities(common::CapabilityList_T_out capabilities) override;
    void modifyPassword(const char* user, const char* old_password, const char* new_password) override;
};

}  // namespace qv_demo
