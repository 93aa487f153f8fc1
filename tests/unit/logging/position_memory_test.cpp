// Logging from a thread for which there is no memory left for a position. This program replaces the
// allocation function that does not throw, so that one allocation can be made to fail.

#include <cerrno>
#include <new>
#include <thread>

#include "tests/unit/logging/log_fixture.h"
#include "tests/unit/request/failing_new.h"

QV_TEST_DEFINE_FAILING_NEW

namespace {

using namespace NS_CORBA;

class PositionMemoryTest : public qv_test::LogFixture {};

TEST_F(PositionMemoryTest, WithoutMemoryThereIsNoPositionAndTheTextIsLoggedAllTheSame) {
    ASSERT_TRUE(InitLog());
    std::thread([] {
        const qv_test::FailingNew noMemory(sizeof(PosForDbg));
        errno = 0;
        EXPECT_EQ(static_cast<PosForDbg*>(*GetTss()), nullptr);
        EXPECT_EQ(errno, ENOMEM);
        SetPos("source", 12);
        TaDebug(3, "text");
    }).join();
    ASSERT_EQ(capture->Entries().size(), 1u);
    qv_test::ExpectEntry(capture->Entries()[0], "corbadebug", 3, "", 0, "text", "");
}

}  // namespace
