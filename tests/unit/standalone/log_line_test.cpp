#include "standalone/log_line.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <ctime>

#include "tests/support/scoped_env.h"

using qv_standalone::LogLine;
using qv_standalone::LogStamp;
using std::chrono::milliseconds;
using std::chrono::system_clock;

namespace {

system_clock::time_point At(long long millis) {
    return system_clock::time_point(milliseconds(millis));
}

/// While it lives local time is that of `zone`.
class Zone {
  public:
    explicit Zone(const std::string& zone) : m_env("TZ", zone) { tzset(); }

  private:
    struct ReadAnew {
        ~ReadAnew() { tzset(); }
    };

    const ReadAnew m_readAnew;  // after m_env went back
    const qv_test::ScopedEnv m_env;
};

}  // namespace

TEST(LogLine, HoldsThreadLevelPositionAndText) {
    const LogLine line("fi\nle", 7, 1, "one\ntwo\n");
    const std::string body = "1 error fi\\x0ale:7 one\n    two\n";
    EXPECT_EQ(line.body(), body);
    EXPECT_EQ(line.text(), " [" + std::to_string(gettid()) + "] " + body);
}

TEST(LogStamp, IsLocalTimeWithMilliseconds) {
    const Zone zone("<+0545>-5:45");
    LogStamp stamp;
    EXPECT_EQ(stamp.At(At(1)), "1970-01-01T05:45:00.001+05:45");
    EXPECT_EQ(stamp.At(At(1'700'000'000'000)), "2023-11-15T03:58:20.000+05:45");
}

TEST(LogStamp, FollowsTheTimeOnAndBack) {
    const Zone zone("UTC0");
    LogStamp stamp;
    EXPECT_EQ(stamp.At(At(999)), "1970-01-01T00:00:00.999+00:00");
    EXPECT_EQ(stamp.At(At(1000)), "1970-01-01T00:00:01.000+00:00");
    EXPECT_EQ(stamp.At(At(1040)), "1970-01-01T00:00:01.040+00:00");
    EXPECT_EQ(stamp.At(At(59'999)), "1970-01-01T00:00:59.999+00:00");
    EXPECT_EQ(stamp.At(At(1000)), "1970-01-01T00:00:01.000+00:00");
}

TEST(LogStamp, BearsTimesBefore1970AndZonesWestOfGreenwich) {
    const Zone zone("<-0330>3:30");
    LogStamp stamp;
    EXPECT_EQ(stamp.At(At(-1)), "1969-12-31T20:29:59.999-03:30");
    EXPECT_EQ(stamp.At(At(-1000)), "1969-12-31T20:29:59.000-03:30");
    EXPECT_EQ(stamp.At(At(0)), "1969-12-31T20:30:00.000-03:30");
}
