#include "services/notify/properties/property_values.h"

namespace qv_notify {

PropertyValues Inherit(const PropertyValues& around, const PropertyValues& own) {
    PropertyValues all = own;
    all.insert(around.begin(), around.end());
    return all;
}

}  // namespace qv_notify
