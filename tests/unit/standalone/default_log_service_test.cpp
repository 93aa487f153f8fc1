#include <gtest/gtest.h>

#include "tests/support/child_process.h"
#include "tests/support/temp_dir.h"

TEST(DefaultLogService, LosesNothingWhenTheProcessExits) {
    const qv_test::TempDir dir;
    qv_test::ChildOptions options;
    options.env["QV_LOG_DIR"] = dir.str();
    options.env["QV_AGENT_CONFIG"] =
        dir.Write("agent.toml", "[agent]\n[platform]\nlog_flush_interval = 60000\n");
    const qv_test::RunResult result = qv_test::Run({QV_LOG_PROBE}, options);
    ASSERT_EQ(result.code, 0) << result.err;
    const std::string text = qv_test::ReadFile(dir.File("probe.log"));
    std::size_t at = 0;
    for (const char* const record : {"probe:1 a trace\n", "probe:2 an operation\n", "probe:3 last words\n",
                                     "probe:4 and an operation\n"}) {
        at = text.find(record, at);
        ASSERT_NE(at, std::string::npos) << record << text;
    }
}
