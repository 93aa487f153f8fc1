// The access list file, and what is reported when it can't be written.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <thread>

#include "request/aclmgr.h"
#include "tests/support/capturing_log_service.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/request/acl_probe.h"

namespace {

using NS_UTIL::IPAcl;
using NS_UTIL::IPAclProbe;
using Table = std::map<unsigned int, bool>;

constexpr char kHeader[] = "# this is a get_distribute acl config file.\n";

class IPAclFileTest : public ::testing::Test {
  protected:
    IPAclFileTest() {
        IPAclProbe::ForgetLog();
        acl.Init(Path(), 30, NS_UTIL::IPACL_OSS);
    }
    ~IPAclFileTest() override { IPAclProbe::ForgetLog(); }

    std::string Path() const { return dir.File("corba_oss_ipacl.cfg"); }
    std::string Contents() const { return qv_test::ReadFile(Path()); }
    /// Makes the file's place one that can't be written, also for the super-user.
    void Block() const { ASSERT_EQ(mkdir(Path().c_str(), 0700), 0); }

    qv_test::ScopedLogCapture capture;
    qv_test::TempDir dir;
    IPAcl acl;
    Table table;
};

TEST_F(IPAclFileTest, NoLinesLeaveTheHeaderAlone) {
    EXPECT_TRUE(acl.RefreshNodeIpAclList({}, {}, table));
    EXPECT_EQ(Contents(), kHeader);
    EXPECT_TRUE(table.empty());
}

TEST_F(IPAclFileTest, LinesFollowUnchangedAndInTheirOrder) {
    EXPECT_TRUE(acl.RefreshNodeIpAclList({"b 2", "", " a=1 ", "%s%n", "two\nlines"}, {}, table));
    EXPECT_EQ(Contents(), kHeader + std::string("b 2\n\n a=1 \n%s%n\ntwo\nlines\n"));
    EXPECT_TRUE(capture->Opened().empty());
}

TEST_F(IPAclFileTest, AnOlderFileIsReplacedAsAWhole) {
    dir.Write("corba_oss_ipacl.cfg", std::string(10000, 'x'));
    EXPECT_TRUE(acl.RefreshNodeIpAclList({"new"}, {}, table));
    EXPECT_EQ(Contents(), kHeader + std::string("new\n"));
}

TEST_F(IPAclFileTest, AddressesJoinTheTableOfTheCaller) {
    table = {{1, false}, {2, false}};
    EXPECT_TRUE(acl.RefreshNodeIpAclList({}, {2, 3, 3}, table));
    EXPECT_EQ(table, (Table{{1, false}, {2, true}, {3, true}}));
}

TEST_F(IPAclFileTest, TheChecksAreNotTouched) {
    const qv_test::AclClock clock;
    EXPECT_TRUE(acl.RefreshNodeIpAclList({"10.0.0.1"}, {0x0A000001}, table));
    EXPECT_EQ(IPAclProbe::Size(acl), 0u);
}

TEST_F(IPAclFileTest, AFileThatCanNotBeOpenedIsReported) {
    Block();
    EXPECT_FALSE(acl.RefreshNodeIpAclList({"line"}, {5}, table));
    EXPECT_EQ(table, (Table{{5, true}}));
    const auto opened = capture->Opened();
    ASSERT_EQ(opened.size(), 1u);
    EXPECT_EQ(opened[0].bundle, "unbi");
    EXPECT_EQ(opened[0].module, "unbi");
    EXPECT_EQ(opened[0].category, "debug");
    const auto entries = capture->Entries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].category, "debug");
    EXPECT_EQ(entries[0].file, "aclmgr");
    EXPECT_EQ(entries[0].function, "unknown");
    EXPECT_EQ(entries[0].line, 124);
    EXPECT_EQ(entries[0].level, 1);
    EXPECT_EQ(entries[0].text, "[IPAcl::RefreshNodeIpAclList] Fail read file: " + Path());
}

TEST_F(IPAclFileTest, TheLogIsOpenedOnceInTheProcess) {
    Block();
    EXPECT_FALSE(acl.RefreshNodeIpAclList({}, {}, table));
    EXPECT_FALSE(acl.RefreshNodeIpAclList({}, {}, table));
    IPAcl other;
    EXPECT_FALSE(other.RefreshNodeIpAclList({}, {}, table));
    EXPECT_EQ(capture->Opened().size(), 1u);
    ASSERT_EQ(capture->Entries().size(), 3u);
    EXPECT_EQ(capture->Entries()[2].text, "[IPAcl::RefreshNodeIpAclList] Fail read file: ");
}

TEST_F(IPAclFileTest, ALogThatIsRefusedIsAskedForAgain) {
    Block();
    capture->Refuse("debug");
    EXPECT_FALSE(acl.RefreshNodeIpAclList({}, {}, table));
    EXPECT_FALSE(acl.RefreshNodeIpAclList({}, {}, table));
    EXPECT_EQ(capture->Opened().size(), 2u);
    EXPECT_TRUE(capture->Entries().empty());
}

TEST_F(IPAclFileTest, WithoutALogServiceNothingIsToldAndNothingFails) {
    const qv_test::ScopedLogCapture none(qv_test::ScopedLogCapture::kNoService);
    Block();
    EXPECT_FALSE(acl.RefreshNodeIpAclList({}, {7}, table));
    EXPECT_EQ(table, (Table{{7, true}}));
}

/// A log service that raises when a log is opened.
class RaisingLogService final : public NS_LOG_SERVICE1::LogSvcInterface {
  public:
    NS_LOG_SERVICE1::LogHandle* OpenLog(const std::string&, const std::string&, const std::string&) override {
        throw 5;
    }
    int IsVerboseLog() override { return 0; }
};

TEST_F(IPAclFileTest, ALogServiceThatRaisesFailsNothing) {
    RaisingLogService raising;
    const auto former =
        qv_standalone::ReplaceServiceObject(qv_standalone::kPlatformBundle, qv_standalone::kLogService,
                                            qv_standalone::MakeServiceObject(raising));
    Block();
    EXPECT_FALSE(acl.RefreshNodeIpAclList({}, {}, table));
    qv_standalone::ReplaceServiceObject(qv_standalone::kPlatformBundle, qv_standalone::kLogService, former);
}

TEST_F(IPAclFileTest, AReportThatRaisesPassesThroughAndUnlocks) {
    Block();
    capture->SetWriteHook([](const qv_test::LogEntry&) { throw std::runtime_error("disk full"); });
    EXPECT_THROW(acl.RefreshNodeIpAclList({}, {}, table), std::runtime_error);
    EXPECT_EQ(IPAclProbe::FileLock(acl).tryacquire_write(), 0);
    IPAclProbe::FileLock(acl).release();
}

TEST_F(IPAclFileTest, AFullDiskIsNoFailureOnceTheFileIsOpen) {
    acl.Init("/dev/full", 30, NS_UTIL::IPACL_OSS);
    EXPECT_TRUE(acl.RefreshNodeIpAclList({"line"}, {}, table));
    EXPECT_TRUE(capture->Entries().empty());
}

TEST_F(IPAclFileTest, WritersTakeTurns) {
    const std::list<std::string> lines(200, "one of many lines");
    std::string expected = kHeader;
    for (const std::string& line : lines) {
        expected += line + "\n";
    }
    std::vector<std::thread> writers;
    for (int i = 0; i < 4; ++i) {
        writers.emplace_back([&] {
            Table own;
            EXPECT_TRUE(acl.RefreshNodeIpAclList(lines, {1}, own));
        });
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    EXPECT_EQ(Contents(), expected);
}

TEST_F(IPAclFileTest, ChecksGoOnWhileTheFileIsWritten) {
    ASSERT_EQ(IPAclProbe::FileLock(acl).acquire_write(), 0);
    std::thread([&] { EXPECT_TRUE(acl.IsValidIP(1)); }).join();
    errno = 0;
    EXPECT_TRUE(acl.RefreshNodeIpAclList({}, {}, table)) << "this thread can't take the lock again";
    EXPECT_EQ(errno, EDEADLK);
    EXPECT_EQ(IPAclProbe::FileLock(acl).release(), 0);
}

}  // namespace
