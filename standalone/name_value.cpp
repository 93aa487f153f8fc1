#include "platform/name_value.h"

namespace NS_BUNDLEMGR1 {

bool GetValByKey(std::string& value, const std::string& key, const std::vector<NameValueStru>& items) {
    for (const NameValueStru& item : items) {
        if (item.name == key) {
            value = item.value;
            return true;
        }
    }
    return false;
}

}  // namespace NS_BUNDLEMGR1
