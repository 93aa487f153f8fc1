// A server by SSL in the test's process, certificates of two authorities, and what the seam reports.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "seam_server.h"
#include "tests/support/certificates/test_authority.h"
#include "tests/support/temp_dir.h"

namespace qv_test {

class SslTest : public ::testing::Test {
  protected:
    SslTest();
    ~SslTest() override;

    /// Starts the server with this service configuration file.
    void Serve(const std::string& profile);
    /// The same with both sides' certificates required.
    void Serve() { Serve(WriteProfile(dir, "server.conf", server_files)); }

    /// The outcome of a call from another process by a client with this service configuration file; empty: by
    /// a client without SSL. A failed start of that process is "failed: " and what it wrote.
    std::string Call(const std::string& ior, const std::string& profile,
                     const std::string& operation = "echo", const std::string& argument = "hello");
    /// What the other process prints in this mode, with these arguments.
    static std::string RunPeer(const std::string& profile, const Strings& args);
    std::string CallAsClient(const std::string& operation = "echo", const std::string& argument = "hello") {
        return Call(server->ior(), ClientProfile(), operation, argument);
    }
    std::string ClientProfile() { return WriteProfile(dir, "client.conf", client_files); }

    /// Whether a line that holds `text` was reported, waiting for it.
    static bool Reported(const std::string& text);
    /// How many lines that hold `text` were reported so far.
    static int CountReported(const std::string& text);
    static std::string AllReported();
    static void ForgetReported();

    TempDir dir;
    TestAuthority authority{dir, "authority"};
    TestAuthority other_authority{dir, "other"};
    IssuedFiles server_files = authority.Issue("server", "server-secret");
    IssuedFiles client_files = authority.Issue("client", "client-secret");
    int ssl_port;
    std::unique_ptr<SeamServer> server;
};

}  // namespace qv_test
