#include "services/notify/properties/admin_properties.h"

#include <gmock/gmock.h>

#include "tests/unit/notify_data/property_fixture.h"

namespace {

using namespace qv_notify_test;
using qv_notify::ApplyAdmin;
using qv_notify::DefaultAdmin;
using qv_notify::PropertyValues;

class AdminProperties : public PropertyTest {};

TEST_F(AdminProperties, BeginWithoutLimits) {
    EXPECT_EQ(DefaultAdmin(), (PropertyValues{{"MaxQueueLength", std::int32_t{0}},
                                              {"MaxConsumers", std::int32_t{0}},
                                              {"MaxSuppliers", std::int32_t{0}},
                                              {"RejectNewEvents", false}}));
}

TEST_F(AdminProperties, AreSetTogether) {
    PropertyValues settings = DefaultAdmin();
    ApplyAdmin(Wishes({{"MaxQueueLength", Long(2147483647)},
                       {"MaxSuppliers", Long(0)},
                       {"MaxConsumers", Long(3)},
                       {"RejectNewEvents", Boolean(true)}}),
               settings);
    EXPECT_EQ(settings, (PropertyValues{{"MaxQueueLength", std::int32_t{2147483647}},
                                        {"MaxConsumers", std::int32_t{3}},
                                        {"MaxSuppliers", std::int32_t{0}},
                                        {"RejectNewEvents", true}}));
}

TEST_F(AdminProperties, AreSetAllOrNotAtAll) {
    PropertyValues settings = DefaultAdmin();
    try {
        ApplyAdmin(Wishes({{"MaxConsumers", Long(3)},
                           {"MaxQueueLength", Long(-1)},
                           {"MaxSuppliers", Short(1)},
                           {"RejectNewEvents", Long(1)},
                           {"MaxConsumers", Long(-2147483647)},
                           {"Priority", Short(1)}}),
                   settings);
        FAIL();
    } catch (const CosNotification::UnsupportedAdmin& refused) {
        EXPECT_THAT(ErrorTexts(refused.admin_err),
                    ::testing::ElementsAre(
                        "MaxQueueLength BAD_VALUE long 0..long 2147483647", "MaxSuppliers BAD_TYPE no range",
                        "RejectNewEvents BAD_TYPE no range", "MaxConsumers BAD_VALUE long 0..long 2147483647",
                        "Priority BAD_PROPERTY no range"));
    }
    EXPECT_EQ(settings, DefaultAdmin());
}

}  // namespace
