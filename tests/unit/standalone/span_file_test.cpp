#include "standalone/span_file.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/temp_dir.h"

using qv_standalone::SpanFile;
using qv_standalone::SpanFileOptions;
using qv_test::ReadFile;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using namespace std::chrono_literals;

namespace fs = std::filesystem;

namespace {

struct SpanFileTest : testing::Test {
    qv_test::TempDir dir;
    SpanFileOptions options{dir.File("log/callchain.jsonl"), 1 << 20, 3};
    std::vector<std::string> told;
    SpanFile::Clock::time_point now{1h};

    std::unique_ptr<SpanFile> Make() {
        return std::make_unique<SpanFile>(
            options, [this](const std::string& sentence) { told.push_back(sentence); },
            [this] { return now; });
    }
    void FullDisk() {
        fs::create_directories(dir.File("log"));
        fs::create_symlink("/dev/full", options.path);
    }
};

}  // namespace

TEST_F(SpanFileTest, EachSpanIsALineAndThereAtOnce) {
    const auto file = Make();
    EXPECT_FALSE(fs::exists(options.path)) << "opened with the first span";
    file->Write({"{1}", "{2}"});
    EXPECT_EQ(ReadFile(options.path), "{1}\n{2}\n");
    file->Write({});
    file->Write({"{%v 3}"});
    EXPECT_EQ(ReadFile(options.path), "{1}\n{2}\n{%v 3}\n");
    EXPECT_THAT(told, ElementsAre());
}

TEST_F(SpanFileTest, AnExistingFileIsContinued) {
    dir.Write("log/callchain.jsonl", "{old}\n");
    Make()->Write({"{new}"});
    EXPECT_EQ(ReadFile(options.path), "{old}\n{new}\n");
}

TEST_F(SpanFileTest, WhatACrashLeftOfALineIsEnded) {
    dir.Write("log/callchain.jsonl", "{old}\n{hal");
    Make()->Write({"{new}"});
    EXPECT_EQ(ReadFile(options.path), "{old}\n{hal\n{new}\n");
}

TEST_F(SpanFileTest, AFileThatWouldGrowTooLargeIsPutAside) {
    options.max_size = 20;
    options.max_files = 2;
    const auto file = Make();
    for (char span = 'a'; span < 'f'; ++span) {
        file->Write({std::string(14, span)});
    }
    EXPECT_EQ(ReadFile(options.path), std::string(14, 'e') + "\n");
    EXPECT_EQ(ReadFile(dir.File("log/callchain.1.jsonl")), std::string(14, 'd') + "\n");
    EXPECT_EQ(ReadFile(dir.File("log/callchain.2.jsonl")), std::string(14, 'c') + "\n");
    EXPECT_FALSE(fs::exists(dir.File("log/callchain.3.jsonl")));
}

TEST_F(SpanFileTest, AFullDiskIsToldOnceAndWhatItCostIsTold) {
    FullDisk();
    const auto file = Make();
    file->Write({"1", "2"});
    EXPECT_EQ(file->Lost(), 2U);
    ASSERT_EQ(told.size(), 1U);
    EXPECT_THAT(told[0], AllOf(HasSubstr("can't write to " + options.path), HasSubstr("No space left")));
    now += 1s;
    file->Write({"3"});
    EXPECT_EQ(told.size(), 1U);
    fs::remove(options.path);
    now += 1s;
    file->Write({"4"});
    EXPECT_EQ(ReadFile(options.path), "4\n");
    ASSERT_EQ(told.size(), 2U);
    EXPECT_THAT(told[1], HasSubstr("again; up to 3 spans were lost"));
    EXPECT_EQ(file->Lost(), 0U);
}

TEST_F(SpanFileTest, AFailedFileIsTriedOncePerSecondOnly) {
    FullDisk();
    const auto file = Make();
    file->Write({"1"});
    fs::remove(options.path);
    now += 999ms;
    file->Write({"2", "3"});
    EXPECT_FALSE(fs::exists(options.path));
    EXPECT_EQ(file->Lost(), 3U);
    now += 1ms;
    file->Write({"4"});
    EXPECT_EQ(ReadFile(options.path), "4\n");
}

TEST_F(SpanFileTest, APlaceThatCannotBeIsToldAndTriedAgain) {
    const std::string obstacle = dir.Write("log", "a file where the directory should be");
    auto file = Make();
    file->Write({"1"});
    ASSERT_EQ(told.size(), 1U);
    EXPECT_THAT(told[0], HasSubstr("can't write to"));
    file.reset();
    ASSERT_EQ(told.size(), 2U);
    EXPECT_THAT(told[1], HasSubstr("is closed; up to 1 spans could not be written"));
    EXPECT_EQ(ReadFile(obstacle), "a file where the directory should be");
}

TEST_F(SpanFileTest, ProgramsStartedMeanwhileDoNotInheritIt) {
    const auto file = Make();
    file->Write({"1"});
    int found = 0;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (fs::read_symlink(entry.path(), gone) == fs::canonical(options.path)) {
            const int fd = std::stoi(entry.path().filename().string());
            EXPECT_NE(fcntl(fd, F_GETFD) & FD_CLOEXEC, 0);
            ++found;
        }
    }
    EXPECT_EQ(found, 1);
}
