#include "orb/ssl/service_config_file.h"

#include <gtest/gtest.h>

#include "orb/ssl/ssl_error.h"
#include "tests/support/scoped_env.h"
#include "tests/support/temp_dir.h"

namespace {

using qv_ssl::Authenticate;
using qv_ssl::ParseServiceConfig;
using qv_ssl::ServiceConfig;
using qv_ssl::SslSettings;

constexpr char kDirective[] =
    "dynamic SSLIOP_Factory Service_Object * TAO_SSLIOP:_make_TAO_SSLIOP_Protocol_Factory() ";

ServiceConfig Parse(const std::string& text) {
    return ParseServiceConfig(text, "the.conf");
}

SslSettings Options(const std::string& options) {
    const ServiceConfig config = Parse(kDirective + options);
    EXPECT_TRUE(config.ssl);
    return config.ssl.value_or(SslSettings{});
}

std::string Failure(const std::string& options) {
    try {
        Parse(kDirective + options);
        return "";
    } catch (const qv_ssl::SslError& error) {
        return error.what();
    }
}

void ExpectAllOptions(const SslSettings& ssl) {
    EXPECT_EQ(ssl.authenticate, Authenticate::kServerAndClient);
    EXPECT_EQ(ssl.pass_phrase, "secret");
    EXPECT_EQ(ssl.private_key_file, "/path/key.pem");
    EXPECT_EQ(ssl.certificate_file, "/path/cert.pem");
    EXPECT_EQ(ssl.authority_file, "/path/ca.pem");
    EXPECT_FALSE(ssl.no_protection);
}

TEST(ServiceConfigFile, AllOptionsOnOneLine) {
    ExpectAllOptions(Options(
        "\"-SSLAuthenticate SERVER_AND_CLIENT -SSLPrivateKeyPasswd secret -SSLPrivateKey PEM:/path/key.pem "
        "-SSLCertificate PEM:/path/cert.pem -SSLCAfile PEM:/path/ca.pem\"\n"));
}

TEST(ServiceConfigFile, AnOptionPerLine) {
    const std::string options =
        "\n  \"-SSLAuthenticate SERVER_AND_CLIENT\n"
        "   -SSLPrivateKeyPasswd secret\n"
        "   -SSLPrivateKey PEM:/path/key.pem\n"
        "   -SSLCertificate PEM:/path/cert.pem\n"
        "   # -SSLNoProtection\n"
        "   -SSLCAfile PEM:/path/ca.pem\n  \"\n";
    ExpectAllOptions(Options(options));
}

TEST(ServiceConfigFile, LinesThatGoOnAfterABackslashAndEndAsWindowsHasIt) {
    ExpectAllOptions(
        Options("\"-SSLAuthenticate SERVER_AND_CLIENT \\\r\n -SSLPrivateKeyPasswd secret \\\r\n"
                "-SSLPrivateKey PEM:/path/key.pem\\\r\n -SSLCertificate PEM:/path/cert.pem\\  \r\n"
                " -SSLCAfile PEM:/path/ca.pem\"\r\n"));
}

TEST(ServiceConfigFile, WordsOfOneValueStayTogether) {
    const SslSettings ssl = Options(
        "\"-SSLPrivateKeyPasswd two words -SSLPrivateKey PEM:/with blank/key.pem\n-SSLCertificate 'PEM:/q "
        "q/c.pem'\"");
    EXPECT_EQ(ssl.pass_phrase, "two words");
    EXPECT_EQ(ssl.private_key_file, "/with blank/key.pem");
    EXPECT_EQ(ssl.certificate_file, "/q q/c.pem");
}

TEST(ServiceConfigFile, APassPhraseMayLookLikeAnOption) {
    EXPECT_EQ(Options("\"-SSLPrivateKeyPasswd -secret -SSLNoProtection\"").pass_phrase, "-secret");
}

TEST(ServiceConfigFile, Modes) {
    EXPECT_EQ(Options("\"-SSLAuthenticate NONE\"").authenticate, Authenticate::kNone);
    EXPECT_EQ(Options("\"-SSLAuthenticate server\"").authenticate, Authenticate::kServer);
    EXPECT_EQ(Options("\"-SSLAuthenticate CLIENT\"").authenticate, Authenticate::kClient);
    EXPECT_EQ(Options("\"\"").authenticate, Authenticate::kServer)
        << "as in the ORB that the option comes from";
    EXPECT_EQ(
        Failure("\"-SSLAuthenticate BOTH\""),
        "the service configuration file the.conf can't be used: -SSLAuthenticate is NONE, SERVER, CLIENT or "
        "SERVER_AND_CLIENT and nothing else");
}

TEST(ServiceConfigFile, NoProtectionAndTheRest) {
    const SslSettings ssl = Options(
        "\"-SSLNoProtection -SSLCipherList HIGH:!aNULL -SSLServerCipherOrder -SSLCApath PEM:/path/ca "
        "-sslcafile "
        "/plain.pem\"");
    EXPECT_TRUE(ssl.no_protection);
    EXPECT_EQ(ssl.ciphers, "HIGH:!aNULL");
    EXPECT_TRUE(ssl.server_chooses_cipher);
    EXPECT_EQ(ssl.authority_directory, "/path/ca");
    EXPECT_EQ(ssl.authority_file, "/plain.pem");
}

TEST(ServiceConfigFile, Asn1FilesAreRefused) {
    EXPECT_EQ(
        Failure("\"-SSLPrivateKey ASN1:/k.der\""),
        "the service configuration file the.conf can't be used: -SSLPrivateKey names a file in ASN1 form; "
        "convert it with the openssl command and write PEM:FILE");
}

TEST(ServiceConfigFile, AnOptionWithoutItsValueIsRefused) {
    EXPECT_EQ(Failure("\"-SSLPrivateKey\n-SSLNoProtection\""),
              "the service configuration file the.conf can't be used: -SSLPrivateKey needs a value");
    EXPECT_EQ(Failure("\"-SSLCAfile PEM:\""),
              "the service configuration file the.conf can't be used: -SSLCAfile names no file");
}

TEST(ServiceConfigFile, APassPhraseIsNotTakenForAnotherOptionsValue) {
    EXPECT_EQ(Failure("\"-SSLAuthenticate -SSLPrivateKeyPasswd secret\""),
              "the service configuration file the.conf can't be used: -SSLAuthenticate needs a value");
    EXPECT_EQ(Parse(std::string(kDirective) + "\"'-SSLColour -SSLPrivateKeyPasswd secret'\"").remarks,
              std::vector<std::string>{"the.conf: the SSL option -SSLColour is unknown and has no effect"});
}

TEST(ServiceConfigFile, UnknownAndIdleOptionsAreMentionedWithoutTheirValues) {
    const ServiceConfig config = Parse(
        std::string(kDirective) + "\"stray -SSLColour secret blue -SSLDHparams PEM:/dh -SSLNoProtection\"");
    ASSERT_EQ(config.remarks.size(), 3u);
    EXPECT_EQ(config.remarks[0], "the.conf: a word ahead of the first SSL option has no effect");
    EXPECT_EQ(config.remarks[1], "the.conf: the SSL option -SSLColour is unknown and has no effect");
    EXPECT_EQ(config.remarks[2],
              "the.conf: -SSLDHparams has no effect: parameters are chosen to fit the key");
    EXPECT_TRUE(config.ssl->no_protection);
}

TEST(ServiceConfigFile, WhatFollowsAPassPhraseInItsLineIsNotNamed) {
    const std::string remark =
        "the.conf: an unknown SSL option in the line of a pass phrase has no effect; a pass phrase of "
        "several "
        "words needs quotes";
    for (const char* option : {"-SSLPrivateKeyPasswd", "-SSLPassword"}) {
        const ServiceConfig config =
            Parse(std::string(kDirective) + "\"" + option +
                  " my -secret -word too -SSLNoProtection '-third one'\n-SSLColour\"");
        EXPECT_EQ(config.ssl->pass_phrase, "my");
        EXPECT_TRUE(config.ssl->no_protection);
        EXPECT_EQ(config.remarks, (std::vector<std::string>{
                                      remark, remark, remark,
                                      "the.conf: the SSL option -SSLColour is unknown and has no effect"}));
        EXPECT_EQ(Options("\"" + std::string(option) + " 'my -secret'\"").pass_phrase, "my -secret");
    }
}

TEST(ServiceConfigFile, OtherDirectivesAreSkipped) {
    EXPECT_FALSE(Parse("static Resource_Factory \"-ORBReactorType select_st\"\n").ssl);
    EXPECT_FALSE(Parse("# dynamic SSLIOP_Factory * \"-SSLNoProtection\"\n").ssl);
    EXPECT_FALSE(Parse("static Other \"never closed\nSSL").ssl) << "that is for others to say";
    EXPECT_FALSE(Parse("").ssl);
    EXPECT_FALSE(Parse("remove SSLIOP_Factory\nstatic Advanced \"-x\"").ssl);
}

TEST(ServiceConfigFile, TheFactoryOfAResourceFactoryIsNoticed) {
    const std::string factory = std::string(kDirective) + "\"-SSLNoProtection\"\n";
    EXPECT_FALSE(Parse(factory).ssl->protocol_named);
    const std::string resources =
        "static Resource_Factory \"-ORBProtocolFactory IIOP_Factory -ORBProtocolFactory SSLIOP_Factory\"\n";
    EXPECT_TRUE(Parse(resources + factory).ssl->protocol_named);
    EXPECT_TRUE(Parse(factory + resources).ssl->protocol_named);
}

TEST(ServiceConfigFile, AStringWithoutItsEndIsRefused) {
    EXPECT_EQ(Failure("\n\"-SSLNoProtection\n"),
              "the service configuration file the.conf has a \" in line 2 that nothing closes");
}

TEST(ServiceConfigFile, VariablesOfTheEnvironmentAreReplaced) {
    const qv_test::ScopedEnv home("QV_SSL_TEST_DIR", "/some/where");
    EXPECT_EQ(Options("\"-SSLCAfile PEM:$QV_SSL_TEST_DIR/ca.pem\"").authority_file, "/some/where/ca.pem");
    EXPECT_EQ(Options("\"-SSLPrivateKeyPasswd a$b$QV_NOT_SET$\"").pass_phrase, "a$b$QV_NOT_SET$");
}

TEST(ServiceConfigFile, AFileThatCantBeReadIsNamed) {
    const qv_test::TempDir dir;
    try {
        qv_ssl::ReadServiceConfigFile(dir.File("none.conf"));
        FAIL();
    } catch (const qv_ssl::SslError& error) {
        EXPECT_EQ(error.what(), "the service configuration file " + dir.File("none.conf") +
                                    " can't be read: No such file or directory");
    }
    EXPECT_THROW(qv_ssl::ReadServiceConfigFile(dir.path()), qv_ssl::SslError);  // no file
    const std::string file = dir.Write("the.conf", std::string(kDirective) + "\"-SSLNoProtection\"\n");
    const ServiceConfig config = qv_ssl::ReadServiceConfigFile(file);
    ASSERT_TRUE(config.ssl);
    EXPECT_EQ(config.ssl->profile, file);
}

TEST(ServiceConfigFile, AnEmptyFileSaysNothing) {
    const qv_test::TempDir dir;
    for (const std::string& file : {dir.Write("empty.conf", ""), std::string("/dev/null")}) {
        EXPECT_FALSE(qv_ssl::ReadServiceConfigFile(file).ssl) << file;
    }
}

}  // namespace
