// The configuration store as a platform without its configuration service presents it. This program's own
// definition takes the place of the one in the platform's library when the program is loaded.

#include "platform/corba_config_items.h"

#include "request/process_exception.h"
#include "tests/unit/logging/log_fixture.h"

namespace {

enum class Store { kAbsent, kBroken };
Store g_store = Store::kAbsent;

}  // namespace

bool NS_BUNDLEMGR1::CorbaConfigItems::GetIntItemInfo(const std::string&, int&) {
    if (g_store == Store::kBroken) {
        throw std::runtime_error("store broken");
    }
    NS_CORBA::InterfaceNotExistException missing;
    missing.m_code = NS_CORBA::InterfaceNotExistException::kInterfaceNotExist;
    throw missing;
}

namespace {

class LogConfigMissingTest : public qv_test::LogFixture {};

TEST_F(LogConfigMissingTest, AnAbsentConfigurationServiceFailsInitAndIsTold) {
    g_store = Store::kAbsent;
    EXPECT_FALSE(Manager().Init());
    EXPECT_EQ(OpenedCategories(), std::vector<std::string>{"corbadebug"});
    ASSERT_EQ(capture->Entries().size(), 1u);
    qv_test::ExpectEntry(capture->Entries()[0], "corbadebug", 2, "logmgr", 348,
                         "CorbaLogMgr::GetLogCfg Failed!");
}

TEST_F(LogConfigMissingTest, AnyOtherFailureOfTheConfigurationPassesOn) {
    g_store = Store::kBroken;
    EXPECT_THROW(Manager().GetLogCfg(), std::runtime_error);
    EXPECT_THROW(Manager().Init(), std::runtime_error);
}

}  // namespace
