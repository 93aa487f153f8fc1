#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "platform/audit_log.h"
#include "platform/log_service.h"
#include "platform/security_service.h"

namespace {

/// The place of a virtual operation in its table, as the C++ ABI of this platform keeps it in a pointer to
/// member: the offset in bytes plus 1.
template <class Member>
std::size_t Slot(Member member) {
    std::ptrdiff_t raw = 0;
    static_assert(sizeof(member) >= sizeof(raw));
    std::memcpy(&raw, &member, sizeof(raw));
    return static_cast<std::size_t>(raw - 1) / sizeof(void*);
}

// Two slots of the destructor come first.
constexpr std::size_t kFirst = 2;

}  // namespace

TEST(PlatformInterfaces, LogHandleHasWriteFormatBehindWrite) {
    using NS_LOG_SERVICE1::LogHandle;
    EXPECT_EQ(Slot(&LogHandle::Write), kFirst);
    EXPECT_EQ(Slot(&LogHandle::WriteFormat), kFirst + 1);
}

TEST(PlatformInterfaces, LogServiceOperationsStandInOrder) {
    using NS_LOG_SERVICE1::LogSvcInterface;
    EXPECT_EQ(Slot(&LogSvcInterface::OpenLog), kFirst);
    EXPECT_EQ(Slot(&LogSvcInterface::IsVerboseLog), kFirst + 1);
}

TEST(PlatformInterfaces, SecurityOperationsStandInOrder) {
    using NS_SECURITY_SERVICE1::SecurityIF;
    EXPECT_EQ(Slot(&SecurityIF::UserLogin), kFirst);
    EXPECT_EQ(Slot(&SecurityIF::UserLogout), kFirst + 1);
    EXPECT_EQ(Slot(&SecurityIF::CheckUserLogin), kFirst + 2);
    EXPECT_EQ(Slot(&SecurityIF::EncryptPassword), kFirst + 3);
    EXPECT_EQ(Slot(&SecurityIF::GetOperRiskLevel), kFirst + 4);
}

TEST(PlatformInterfaces, AuditOperationsStandInOrder) {
    EXPECT_EQ(Slot(&NS_CORBA::AuditLogif::BeginAudit), kFirst);
    EXPECT_EQ(Slot(&NS_CORBA::AuditLogif::EndAudit), kFirst + 1);
}

TEST(PlatformInterfaces, EachServiceCanBeCastToFromTheCommonBase) {
    using NS_BUNDLEMGR1::ServiceInterface;
    EXPECT_TRUE((std::is_base_of_v<ServiceInterface, NS_LOG_SERVICE1::LogSvcInterface>));
    EXPECT_TRUE((std::is_base_of_v<ServiceInterface, NS_SECURITY_SERVICE1::SecurityIF>));
    EXPECT_TRUE((std::is_base_of_v<ServiceInterface, NS_CORBA::AuditLogif>));
    EXPECT_TRUE(std::is_polymorphic_v<ServiceInterface>);
}
