#include "services/notify/program/orb_start.h"

#include "services/notify/program/call_limit.h"

namespace qv_notify {

CORBA::ORB_ptr InitOrb(const Settings& settings) {
    std::vector<std::string> texts = settings.orb_arguments;
    std::vector<char*> arguments;
    arguments.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        arguments.push_back(text.data());
    }
    arguments.push_back(nullptr);
    int count = static_cast<int>(texts.size());
    CORBA::ORB_var orb = CORBA::ORB_init(count, arguments.data());
    LimitCalls(orb.in(), settings.call_timeout);
    return orb._retn();
}

}  // namespace qv_notify
