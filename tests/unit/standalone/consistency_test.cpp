#include "standalone/consistency.h"

#include <gtest/gtest.h>

#include "standalone/settings_file.h"

using qv_standalone::ParseSettings;
using qv_standalone::SettingsFile;

namespace {

std::vector<std::string> Problems(const std::string& agent) {
    std::vector<std::string> texts;
    for (const auto& finding : ParseSettings("[agent]\n" + agent, "x").findings) {
        texts.push_back(std::to_string(finding.line) + " " + finding.key + " " + finding.problem);
    }
    return texts;
}

using Texts = std::vector<std::string>;

}  // namespace

TEST(Consistency, TheDefaultsFitTogether) {
    EXPECT_EQ(Problems(""), Texts());
}

TEST(Consistency, NamesAPortThatTwoProcessesTake) {
    EXPECT_EQ(Problems("CORBAAgent_Port = 12001\n"),
              Texts{"2 CORBAAgent_Port port 12001 is also the one of NamingService_Port"});
    EXPECT_EQ(Problems("NamingService_Port = 12003\n"),
              Texts{"2 NamingService_Port port 12003 is also the one of CORBAAgent_Port"});
}

TEST(Consistency, ThePortsOfOtherHostsAreFree) {
    EXPECT_EQ(Problems("CORBAAgent_Port = 12001\nNamingService_Host = 'other'\n"), Texts());
    EXPECT_EQ(Problems("CORBAAgent_Port = 12001\nNamingService_Host = '127.0.0.1'\n").size(), 1U);
}

TEST(Consistency, SslPortsCountWithSslOnly) {
    EXPECT_EQ(Problems("NotifyService_SSLPort = 22001\n"), Texts());
    EXPECT_EQ(Problems("SSLMode = 1\nSSL_Profile = 'f'\nNotifyService_SSLPort = 22001\n"),
              Texts{"4 NotifyService_SSLPort port 22001 is also the one of NamingService_SSLPort"});
}

TEST(Consistency, SslNeedsItsProfile) {
    EXPECT_EQ(Problems("SSLMode = 1\n"),
              Texts{"2 SSLMode SSL is on, but SSL_Profile names no file with key and certificate"});
    EXPECT_EQ(Problems("SSLMode = 1\nSSL_Profile = 'f'\n"), Texts());
}
