#include "services/common/service_manager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/notify_socket.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"

namespace qv_service {
namespace {

using qv_test::NotifySocket;
using qv_test::ScopedEnv;
using testing::HasSubstr;

TEST(ServiceManager, IsToldWhenTheServiceIsUpAndWhenItEnds) {
    const qv_test::TempDir dir;
    const NotifySocket manager(dir.File("notify"));
    const ScopedEnv set("NOTIFY_SOCKET", manager.Path());
    EXPECT_EQ(TellReady("serving corbaloc:iiop:localhost:3000/NameService"), "");
    EXPECT_EQ(manager.Take(), "READY=1\nSTATUS=serving corbaloc:iiop:localhost:3000/NameService");
    TellStopping();
    EXPECT_EQ(manager.Take(), "STOPPING=1");
}

TEST(ServiceManager, GetsOneStatusLineWhateverTheTextHolds) {
    const qv_test::TempDir dir;
    const NotifySocket manager(dir.File("notify"));
    const ScopedEnv set("NOTIFY_SOCKET", manager.Path());
    EXPECT_EQ(TellReady("bindings in /srv/a\nMAINPID=1"), "");
    EXPECT_EQ(manager.Take(), "READY=1\nSTATUS=bindings in /srv/a MAINPID=1");
}

TEST(ServiceManager, IsNotLookedForWithoutItsVariable) {
    const ScopedEnv unset("NOTIFY_SOCKET", std::nullopt);
    EXPECT_EQ(TellReady("serving"), "");
    TellStopping();
}

TEST(ServiceManager, WhenItIsGoneTheOperatorHears) {
    const qv_test::TempDir dir;
    const ScopedEnv set("NOTIFY_SOCKET", dir.File("nobody"));
    EXPECT_THAT(TellReady("serving"), HasSubstr("could not be told"));
    TellStopping();
}

}  // namespace
}  // namespace qv_service
