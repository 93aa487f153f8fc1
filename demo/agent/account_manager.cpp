#include "demo/agent/account_manager.h"

#include "demo/agent/failure.h"
#include "demo/agent/task_context.h"
#include "tools/secrets/wiper.h"

namespace qv_demo {

void AccountManager::getCapabilities(common::CapabilityList_T_out capabilities) {
    Touch();
    capabilities = CommonCapabilitiesAnd({"modifyPassword"});
}

void AccountManager::modifyPassword(const char* user, const char* old_password, const char* new_password) {
    const qv_secrets::Wiper old_wiper(old_password);
    const qv_secrets::Wiper new_wiper(new_password);
    Touch();
    const auto own = OwnSession();
    if (own->user != user) {
        Fail(globaldefs::EXCPT_ACCESS_DENIED, "a session changes the password of its own user alone");
    }
    ems().accounts.ChangePassword(own->user, old_password, new_password, CallerAddress());
}

}  // namespace qv_demo
