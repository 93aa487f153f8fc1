#include <locale>
#include <stdexcept>
#include <thread>

#include "orb/portability.h"
#include "tests/unit/request/interceptor_fixture.h"

namespace {

using qv_test::ExpectEntry;
using qv_test::LogEntry;

constexpr char kFile[] = "agent_request_interceptor";

class OperationStatisticsTest : public qv_test::InterceptorFixture {
  protected:
    OperationStatisticsTest() { EnableStatistics(true); }

    void Request(Server_Request_Interceptor& interceptor, const char* operation) {
        info.operationName = operation;
        interceptor.RecordOperCount(&info);
    }

    /// What the file holds after a start with `contents` and one "zzz" request, without the line of that.
    std::string Reload(const std::string& contents) {
        WriteStatistics(contents);
        qv_test::OwnInterceptor interceptor;
        Request(*interceptor, "zzz");
        const std::string after = Statistics();
        const std::string last = "zzz = 1\n";
        EXPECT_GE(after.size(), last.size());
        EXPECT_EQ(after.substr(after.size() - last.size()), last);
        return after.substr(0, after.size() - last.size());
    }

    void ExpectOnlyDebugEntry(int line, const std::string& text) {
        const auto entries = capture->Entries("corbadebug");
        ASSERT_EQ(entries.size(), 1u);
        ExpectEntry(entries[0], "corbadebug", 1, kFile, line, text);
    }
};

TEST_F(OperationStatisticsTest, TheFirstRequestMakesTheFile) {
    qv_test::OwnInterceptor interceptor;
    EXPECT_FALSE(std::filesystem::exists(StatisticsPath()));
    Request(*interceptor, "ping");
    EXPECT_EQ(Statistics(), "ping = 1\n");
}

TEST_F(OperationStatisticsTest, CountsSurviveARestart) {
    WriteStatistics("ping = 7\n");
    {
        qv_test::OwnInterceptor interceptor;
        EXPECT_EQ(Statistics(), "ping = 7\n");
        Request(*interceptor, "ping");
        EXPECT_EQ(Statistics(), "ping = 8\n");
    }
    EXPECT_EQ(Statistics(), "ping = 8\n");
    qv_test::OwnInterceptor next;
    Request(*next, "ping");
    EXPECT_EQ(Statistics(), "ping = 9\n");
}

TEST_F(OperationStatisticsTest, EachRequestRewritesTheFile) {
    qv_test::OwnInterceptor interceptor;
    Request(*interceptor, "ping");
    std::filesystem::remove(StatisticsPath());
    Request(*interceptor, "getEmsSession");
    EXPECT_EQ(Statistics(), "getEmsSession = 1\nping = 1\n");
}

TEST_F(OperationStatisticsTest, AZeroCountIsDroppedUntilTheOperationIsRequested) {
    WriteStatistics("ping = 0\ngetEmsSession = 5\n");
    qv_test::OwnInterceptor interceptor;
    Request(*interceptor, "getEmsSession");
    EXPECT_EQ(Statistics(), "getEmsSession = 6\n");
    Request(*interceptor, "ping");
    EXPECT_EQ(Statistics(), "getEmsSession = 6\nping = 1\n");
}

TEST_F(OperationStatisticsTest, TheLaterOfTwoLinesOfOneNameCounts) {
    EXPECT_EQ(Reload("ping = 7\nping = 3\n"), "ping = 3\n");
}

TEST_F(OperationStatisticsTest, AnySeparatorIsReadAndTheUsualOneWritten) {
    EXPECT_EQ(Reload("ping : 7\n"), "ping = 7\n");
    EXPECT_EQ(Reload("ping x7"), "ping = 7\n");
}

TEST_F(OperationStatisticsTest, ABlankLineChangesNothing) {
    EXPECT_EQ(Reload("\nping = 7\n\n  \ngetEMS = 2\n\n"), "getEMS = 2\nping = 7\n");
}

TEST_F(OperationStatisticsTest, ANameAloneTakesTheCountOfTheLineBefore) {
    EXPECT_EQ(Reload("ping = 7\ngetEMS\n"), "getEMS = 7\nping = 7\n");
    EXPECT_EQ(Reload("getEMS\nping = 7\n"), "ping = 7\n");
}

TEST_F(OperationStatisticsTest, ACountThatIsNoNumberIsSkipped) {
    EXPECT_EQ(Reload("ping = many\ngetEMS = 2\n"), "getEMS = 2\n");
}

TEST_F(OperationStatisticsTest, NamesAreSortedByTheirBytes) {
    qv_test::OwnInterceptor interceptor;
    for (const char* operation : {"ping", "Push_events", "getEMS", "GetSTFromGWByUserInfo"}) {
        Request(*interceptor, operation);
    }
    EXPECT_EQ(Statistics(), "GetSTFromGWByUserInfo = 1\nPush_events = 1\ngetEMS = 1\nping = 1\n");
}

TEST_F(OperationStatisticsTest, SwitchedOffTheFileIsNeitherReadNorWritten) {
    EnableStatistics(false);
    WriteStatistics("ping = 7\n");
    ASSERT_TRUE(InitLog({{"bLogOperation", "1"}}));
    qv_test::OwnInterceptor interceptor;
    Request(*interceptor, "ping");
    EXPECT_EQ(Statistics(), "ping = 7\n");
    EXPECT_EQ(capture->Entries("corbaoper").size(), 1u);

    std::filesystem::remove(StatisticsPath());
    Request(*interceptor, "ping");
    EXPECT_FALSE(std::filesystem::exists(StatisticsPath()));
}

TEST_F(OperationStatisticsTest, TheSwitchIsAskedAtEachRequest) {
    qv_test::OwnInterceptor interceptor;
    Request(*interceptor, "ping");
    EnableStatistics(false);
    Request(*interceptor, "ping");
    EXPECT_EQ(Statistics(), "ping = 1\n");
    EnableStatistics(true);
    Request(*interceptor, "ping");
    EXPECT_EQ(Statistics(), "ping = 2\n");
}

TEST_F(OperationStatisticsTest, AFileThatCannotBeWrittenLosesNoCounts) {
    ASSERT_TRUE(InitLog());
    qv_test::OwnInterceptor interceptor;
    std::filesystem::create_directory(StatisticsPath());
    EXPECT_NO_THROW(Request(*interceptor, "ping"));
    EXPECT_NO_THROW(Request(*interceptor, "ping"));
    EXPECT_TRUE(std::filesystem::is_directory(StatisticsPath()));
    std::filesystem::remove(StatisticsPath());
    Request(*interceptor, "ping");
    EXPECT_EQ(Statistics(), "ping = 3\n");
    EXPECT_TRUE(capture->Entries().empty());
}

TEST_F(OperationStatisticsTest, ADirectoryThatVanishesLosesNoCounts) {
    ASSERT_TRUE(InitLog());
    qv_test::OwnInterceptor interceptor;
    std::filesystem::remove_all(LogPath());
    EXPECT_NO_THROW(Request(*interceptor, "ping"));
    std::filesystem::create_directory(LogPath());
    Request(*interceptor, "ping");
    EXPECT_EQ(Statistics(), "ping = 2\n");
    EXPECT_TRUE(capture->Entries().empty());
}

TEST_F(OperationStatisticsTest, AnUnreadableFileIsNoFailure) {
    ASSERT_TRUE(InitLog());
    std::filesystem::create_directory(StatisticsPath());
    qv_test::OwnInterceptor interceptor;
    std::filesystem::remove(StatisticsPath());
    Request(*interceptor, "ping");
    EXPECT_EQ(Statistics(), "ping = 1\n");
    EXPECT_TRUE(capture->Entries().empty());
}

TEST_F(OperationStatisticsTest, ATruncatedFileIsLoadedAsFarAsItGoes) {
    EXPECT_EQ(Reload("getEMS = 2\nping = 12"), "getEMS = 2\nping = 12\n");
    EXPECT_EQ(Reload("getEMS = 2\nping ="), "getEMS = 2\nping = 2\n");
    EXPECT_EQ(Reload("getEMS = 2\npi"), "getEMS = 2\npi = 2\n");
    EXPECT_EQ(Reload(""), "");
}

TEST_F(OperationStatisticsTest, ABinaryFileDoesNoHarm) {
    std::string noise("\0\xff\n = \n\x01 = 4\n", 13);
    for (int byte = 0; byte < 4096; ++byte) {
        noise.push_back(static_cast<char>((byte * 131 + byte / 7) % 256));
    }
    noise += "\nping = 7\n";
    WriteStatistics(noise);
    qv_test::OwnInterceptor interceptor;
    Request(*interceptor, "ping");
    EXPECT_NE(Statistics().find("ping = 8\n"), std::string::npos);
}

TEST_F(OperationStatisticsTest, AHugeLineDoesNoHarm) {
    const std::string name(8UL * 1024 * 1024, 'n');
    EXPECT_EQ(Reload(name + " = x\nping = 7\n"), "ping = 7\n");
}

TEST_F(OperationStatisticsTest, ACountBeyondTheNumbersRangeIsTheLargest) {
    EXPECT_EQ(Reload("ping = 99999999999999999999999\n"), "ping = 18446744073709551615\n");
}

TEST_F(OperationStatisticsTest, TheProcessesLocaleDoesNotReachTheFile) {
    struct Grouping : std::numpunct<char> {
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    const std::locale former = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    WriteStatistics("ping = 1234567\n");
    qv_test::OwnInterceptor interceptor;
    Request(*interceptor, "ping");
    const std::string after = Statistics();
    std::locale::global(former);
    EXPECT_EQ(after, "ping = 1234568\n");
}

TEST_F(OperationStatisticsTest, RequestsOfManyThreadsAreAllCounted) {
    qv_test::OwnInterceptor interceptor;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&interceptor] {
            qv_test::FakeServerRequestInfo own;
            for (int request = 0; request < 50; ++request) {
                interceptor->RecordOperCount(&own);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(Statistics(), "ping = 200\n");
}

TEST_F(OperationStatisticsTest, AFailedRecordIsToldAndTheRequestNotCounted) {
    ASSERT_TRUE(InitLog({{"bLogOperation", "1"}}));
    qv_test::OwnInterceptor interceptor;
    std::function<void()> raise;
    capture->SetWriteHook([&raise](const LogEntry& entry) {
        if (entry.category == "corbaoper") {
            raise();
        }
    });

    const CORBA::TRANSIENT failure(3, CORBA::COMPLETED_NO);
    raise = [failure] { throw failure; };
    EXPECT_NO_THROW(Request(*interceptor, "ping"));
    ExpectOnlyDebugEntry(
        134,
        "Exception: [Server_Request_Interceptor::receive_request] get CORBA exception while writing "
        "request operation log !==>" +
            qv_orb::ExceptionText(failure));

    capture->Clear();
    raise = [] { throw std::runtime_error("disk full"); };
    EXPECT_NO_THROW(Request(*interceptor, "ping"));
    ExpectOnlyDebugEntry(
        138,
        "[Server_Request_Interceptor::receive_request] get std::excpetion while writing request "
        "operation log ! disk full");

    capture->Clear();
    raise = [] { throw 7; };
    EXPECT_NO_THROW(Request(*interceptor, "ping"));
    ExpectOnlyDebugEntry(
        143,
        "[Server_Request_Interceptor::receive_request] get unknow excpetion while writing request "
        "operation log !");

    EXPECT_FALSE(std::filesystem::exists(StatisticsPath()));
    raise = [] {};
    Request(*interceptor, "ping");
    EXPECT_EQ(Statistics(), "ping = 1\n");
}

TEST_F(OperationStatisticsTest, ANullOperationNameCountsAsAnEmptyOne) {
    qv_test::OwnInterceptor interceptor;
    Request(*interceptor, nullptr);
    EXPECT_EQ(Statistics(), " = 1\n");
}

TEST_F(OperationStatisticsTest, ARequestThatDoesNotTellItsNameRaisesBeforeTheLock) {
    qv_test::OwnInterceptor interceptor;
    info.operationRaises = true;
    EXPECT_THROW(interceptor->RecordOperCount(&info), CORBA::BAD_INV_ORDER);
    info.operationRaises = false;
    interceptor->RecordOperCount(&info);
    EXPECT_EQ(Statistics(), "ping = 1\n");
}

}  // namespace
