#include "request/process_exception.h"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>

#include "tests/unit/logging/log_fixture.h"

namespace {

using namespace NS_CORBA;
using qv_test::ExpectEntry;

class ProcessExceptionTest : public qv_test::LogFixture {
  protected:
    static void Fill(ProcessException& e) {
        e.m_code = 0x41180006;
        e.m_line = 7;
        e.m_file << "a";
        e.m_function << "b";
        e.m_detail << "d";
        e.m_message << "c";
    }
};

TEST_F(ProcessExceptionTest, StartsEmpty) {
    ProcessException e;
    EXPECT_EQ(e.m_code, 0u);
    EXPECT_EQ(e.m_line, 0);
    EXPECT_EQ(e.m_file.str(), "");
    EXPECT_EQ(e.m_function.str(), "");
    EXPECT_EQ(e.m_detail.str(), "");
    EXPECT_EQ(e.m_message.str(), "");
}

TEST_F(ProcessExceptionTest, AnEmptyExceptionIsLoggedAsAnEmptyLineNowhere) {
    ASSERT_TRUE(InitLog());
    SetPos("source", 12);
    ProcessException e;
    NbiException(e);
    ASSERT_EQ(capture->Entries().size(), 1u);
    ExpectEntry(capture->Entries()[0], "corbadebug", 1, "", 0, "", "");
}

TEST_F(ProcessExceptionTest, IsLoggedWithThePlaceOfTheRaise) {
    ASSERT_TRUE(InitLog());
    ProcessException e;
    Fill(e);
    NbiException(e);
    ASSERT_EQ(capture->Entries().size(), 1u);
    ExpectEntry(capture->Entries()[0], "corbadebug", 1, "a", 7, "c", "b");
}

TEST_F(ProcessExceptionTest, ThePlaceStaysSetForTheNextLine) {
    ASSERT_TRUE(InitLog());
    ProcessException e;
    Fill(e);
    NbiException(e);
    TaDebug(3, "next");
    ASSERT_EQ(capture->Entries().size(), 2u);
    ExpectEntry(capture->Entries()[1], "corbadebug", 3, "a", 7, "next", "b");
}

TEST_F(ProcessExceptionTest, LoggingLeavesItToBeCopiedAndLoggedAgain) {
    ASSERT_TRUE(InitLog());
    ProcessException e;
    Fill(e);
    NbiException(e);
    NbiException(e);
    ProcessException copy(e);
    EXPECT_EQ(copy.m_message.str(), "c");
    ASSERT_EQ(capture->Entries().size(), 2u);
    EXPECT_EQ(capture->Entries()[1].text, "c");
}

TEST_F(ProcessExceptionTest, BeforeInitLoggingIsSilent) {
    ProcessException e;
    Fill(e);
    EXPECT_NO_THROW(NbiException(e));
    EXPECT_TRUE(capture->Entries().empty());
}

TEST_F(ProcessExceptionTest, AnExceptionOfTheLogPassesToTheCaller) {
    ASSERT_TRUE(InitLog());
    capture->SetWriteHook([](const qv_test::LogEntry&) { throw std::runtime_error("disk full"); });
    ProcessException e;
    EXPECT_THROW(NbiException(e), std::runtime_error);
}

TEST_F(ProcessExceptionTest, TheFirstCopyCarriesTheTextsAndTheSecondOnlyTheNumbers) {
    ProcessException e;
    Fill(e);
    ProcessException first(e);
    EXPECT_EQ(first.m_code, 0x41180006u);
    EXPECT_EQ(first.m_line, 7);
    EXPECT_EQ(first.m_file.str(), "a");
    EXPECT_EQ(first.m_function.str(), "b");
    EXPECT_EQ(first.m_detail.str(), "d");
    EXPECT_EQ(first.m_message.str(), "c");

    ProcessException second(e);
    EXPECT_EQ(second.m_code, 0x41180006u);
    EXPECT_EQ(second.m_line, 7);
    EXPECT_EQ(second.m_file.str(), "");
    EXPECT_EQ(second.m_function.str(), "");
    EXPECT_EQ(second.m_detail.str(), "");
    EXPECT_EQ(second.m_message.str(), "");
    EXPECT_EQ(e.m_message.str(), "c");
}

TEST_F(ProcessExceptionTest, ACopyOfAnEmptyTextTakesNoMoreBeforeClear) {
    ProcessException e;
    ProcessException copy(e);
    copy.m_message << "lost";
    EXPECT_EQ(copy.m_message.str(), "");
    copy.m_message.clear();
    copy.m_message << "kept";
    EXPECT_EQ(copy.m_message.str(), "kept");
}

TEST_F(ProcessExceptionTest, EachTextIsLoggedUpToItsFirstNul) {
    ASSERT_TRUE(InitLog());
    ProcessException e;
    const std::string text("before\0after", 12);
    e.m_file << "file " << text;
    e.m_function << "function " << text;
    e.m_message << "message " << text;
    NbiException(e);
    ASSERT_EQ(capture->Entries().size(), 1u);
    ExpectEntry(capture->Entries()[0], "corbadebug", 1, "file before", 0, "message before",
                "function before");
}

TEST_F(ProcessExceptionTest, CatchesAnAbsentInterface) {
    bool caught = false;
    try {
        InterfaceNotExistException missing;
        missing.m_code = InterfaceNotExistException::kInterfaceNotExist;
        missing.m_line = 9;
        missing.m_message << "gone";
        throw missing;
    } catch (ProcessException& e) {
        caught = true;
        EXPECT_EQ(e.m_code, 0x41180004u);
        EXPECT_EQ(e.m_line, 9);
        EXPECT_EQ(e.m_message.str(), "gone");
    }
    EXPECT_TRUE(caught);
}

TEST_F(ProcessExceptionTest, WhatIsTheStandardLibrarysText) {
    ProcessException e;
    Fill(e);
    EXPECT_STREQ(e.what(), std::exception().what());
    InterfaceNotExistException missing;
    missing.m_message << "gone";
    EXPECT_STREQ(missing.what(), std::exception().what());
}

}  // namespace
