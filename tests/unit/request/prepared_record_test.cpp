// The record of a request with its text made ahead of the lock, for calls through a real ORB: it has to be
// what the log manager writes when it is asked directly, and to leave nothing for another request.

#include <map>
#include <stdexcept>
#include <thread>

#include "standalone/thread_setup.h"
#include "tests/unit/request/prepared_record_fixture.h"

namespace {

using namespace qv_test;

TEST_F(PreparedRecordTest, TheRecordIsTheLogManagersOwn) {
    const auto stored = ExpectAsWrittenDirectly([this] { Store("first"); });
    ASSERT_EQ(stored.size(), 1u);
    EXPECT_NE(stored[0].text.find("ParaList = {\n--- Parameter No.1 = first\n--- Parameter No.2 = 5\n"
                                  "--- Parameter No.3 = note\n } "),
              std::string::npos);
    EXPECT_EQ(ExpectAsWrittenDirectly([this] { target->ping(); }).size(), 1u);
}

TEST_F(PreparedRecordTest, SecretsAreMasked) {
    const auto entries =
        ExpectAsWrittenDirectly([this] { target->modifyPassword("oss1", "old secret", "new secret"); });
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_NE(entries[0].text.find("No.1 = oss1\n--- Parameter No.2 = ******\n--- Parameter No.3 = ******\n"),
              std::string::npos);
    EXPECT_EQ(entries[0].text.find("secret"), std::string::npos);
}

TEST_F(PreparedRecordTest, ARiskyRequestIsAuditedWithItsBody) {
    services.security.levels["modifyPassword"] = 2;
    target->modifyPassword("oss1", "old secret", "new secret");
    ASSERT_EQ(services.audit.begun.size(), 1u);
    EXPECT_EQ(services.audit.begun[0].fields["operName"], "modifyPassword");
    EXPECT_EQ(services.audit.begun[0].fields["strInfo"],
              "ParaList = {\n--- Parameter No.1 = oss1\n--- Parameter No.2 = ******\n"
              "--- Parameter No.3 = ******\n } ");
}

TEST_F(PreparedRecordTest, WhatCannotBePrintedIsToldOnceAndAsEver) {
    const CORBA::Any unprintable = Unprintable();
    const auto entries = ExpectAsWrittenDirectly([&] { Store("first", unprintable); });
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].category, "corbadebug");
    EXPECT_NE(entries[1].text.find("...this record is not full!"), std::string::npos);
    EXPECT_EQ(Statistics(), "store = 1\n");
}

TEST_F(PreparedRecordTest, AnAuditThatFailsIsToldOnceAndAsEver) {
    services.RemoveSecurity();
    const auto entries = ExpectAsWrittenDirectly([this] { Store("first"); });
    ASSERT_EQ(entries.size(), 2u);
    qv_test::ExpectEntry(entries[0], "corbadebug", 3, "logmgr", 561,
                         "[CorbaLogMgr::GetOperLogRecord] CORBA exception received when parsing message!");
    EXPECT_NE(entries[1].text.find(" } ---ERROR: Exception occurred when parsing message!...this record is "
                                   "not full!"),
              std::string::npos);
}

TEST_F(PreparedRecordTest, ANulInTheCallersNameEndsTheRecordThere) {
    Points::request = [this](Info request) {
        qv_standalone::SetThreadContext(std::string("[oss\0 2][192.0.2.8:5]", 21), "");
        Gate().RecordOperCount(request);
        qv_standalone::ClearThreadContext();
    };
    Store("first");
    ASSERT_EQ(Records().size(), 1u);
    EXPECT_EQ(Records()[0], "---MessageType:  REQUEST, RemoteAddress:  <USERNAME_TAG>oss");
}

TEST_F(PreparedRecordTest, ARequestRecordedWhileAnotherIsWrittenHasItsOwnText) {
    qv_test::FakeOperation other("other");
    other.AddText("of the other");
    bool within = false;
    capture->SetWriteHook([&](const LogEntry& entry) {
        if (entry.category == "corbaoper" && !within) {
            within = true;
            NS_CORBA::TaWriteOperLog(&other, kRequest);
        }
    });
    Store("first");
    const auto records = Records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_NE(records[0].find("Operation Name = other\nParaList = {\n--- Parameter No.1 = of the other\n } "),
              std::string::npos);
    EXPECT_EQ(records[0].find("first"), std::string::npos);
    EXPECT_NE(records[1].find("Operation Name = store\nParaList = {\n--- Parameter No.1 = first\n"),
              std::string::npos);
}

TEST_F(PreparedRecordTest, NothingIsLeftOfARequestWhoseRecordFailed) {
    capture->SetWriteHook([](const LogEntry& entry) {
        if (entry.category == "corbaoper") {
            throw std::runtime_error("disk full");
        }
    });
    Store("lost");
    EXPECT_FALSE(std::filesystem::exists(StatisticsPath()));
    capture->SetWriteHook({});
    capture->Clear();
    info.operationName = "other";
    NS_CORBA::TaWriteOperLog(&info, kRequest);
    Store("kept");
    const auto records = Records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_NE(records[0].find("Operation Name = other"), std::string::npos);
    EXPECT_EQ(records[0].find("lost"), std::string::npos);
    EXPECT_NE(records[1].find("No.1 = kept"), std::string::npos);
    EXPECT_EQ(Statistics(), "store = 1\n");
}

TEST_F(PreparedRecordTest, ARefusedRequestIsNotRead) {
    qv_test::NotingHooks hooks;
    NS_CORBA::CorbaBaseAgentConfig::Instance()->SetReqInterceptorImpl(&hooks);
    hooks.before = [] { throw CORBA::NO_PERMISSION(); };
    Points::request = [this](Info request) { Gate().receive_request(request); };
    services.security.hook = [] { FAIL() << "the refused request was rated"; };
    EXPECT_THROW(target->modifyPassword("oss1", "old secret", "new secret"), CORBA::NO_PERMISSION);
    EXPECT_TRUE(capture->Entries().empty());
    services.security.hook = {};
    hooks.before = {};
    target->ping();
    const auto records = Records();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_NE(records[0].find("Operation Name = ping\nParaList = {\n } "), std::string::npos);
    NS_CORBA::CorbaBaseAgentConfig::Instance()->SetReqInterceptorImpl(nullptr);
}

TEST_F(PreparedRecordTest, RecordsOfManyThreadsComeInTheOrderOfTheCounts) {
    std::map<std::string, unsigned long> written;  // by the records so far; the interceptor's lock guards it
    std::string expected;
    int misplaced = 0;
    capture->SetWriteHook([&](const LogEntry& entry) {
        if (entry.category != "corbaoper") {
            return;
        }
        // Whoever has written a record ahead of this one has counted it, and nobody after it has.
        misplaced += std::filesystem::exists(StatisticsPath()) && Statistics() != expected ? 1 : 0;
        ++written[entry.text.find("Operation Name = ping\n") != std::string::npos ? "ping" : "store"];
        expected.clear();
        for (const auto& [operation, count] : written) {
            expected += operation + " = " + std::to_string(count) + "\n";
        }
    });
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([this, thread] {
            for (int call = 0; call < 50; ++call) {
                if (call % 2 == 0) {
                    target->ping();
                } else {
                    Store(std::string(static_cast<std::size_t>(1 + thread), 'n').c_str());
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(misplaced, 0);
    EXPECT_EQ(Records().size(), 200u);
    EXPECT_EQ(Statistics(), "ping = 100\nstore = 100\n");
}

TEST_F(PreparedRecordTest, WithTheLogOffNothingIsAskedOfTheRequest) {
    NS_CORBA::CorbaLogMgr::Destroy();
    ASSERT_TRUE(InitLog({{"bLogOperation", "0"}}));
    int asked = 0;
    qv_test::FakeOperation fake("ping");
    fake.adapterRaises = [&asked] { ++asked; };
    fake.argumentsRaise = [&asked] { ++asked; };
    Gate().RecordOperCount(&fake);
    EXPECT_EQ(asked, 0);
    EXPECT_EQ(fake.operationCalls, 1);
    EXPECT_EQ(Statistics(), "ping = 1\n");
    EXPECT_TRUE(Records().empty());
}

TEST_F(PreparedRecordTest, ARequestWithAnysOnlyIsReadOnce) {
    int asked = 0;
    qv_test::FakeOperation fake("ping");
    fake.adapterRaises = [&asked] { ++asked; };
    Gate().RecordOperCount(&fake);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(Records().size(), 1u);
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    qv_test::RegisterOrb();
    return RUN_ALL_TESTS();
}
