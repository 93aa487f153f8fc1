// Base of tests that run twice: with the client in another process and in this one.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "seam_server.h"

namespace qv_test {

class BothSidesTest : public ::testing::TestWithParam<bool> {
  protected:
    explicit BothSidesTest(const SeamServer::Options& options = {}) : server(options) {}

    static bool IsRemote() { return GetParam(); }
    std::string Call(const std::string& operation, const std::string& argument = "") {
        return IsRemote() ? server.Remote(operation, argument) : server.Collocated(operation, argument);
    }

    SeamServer server;
};

inline std::string SideName(const ::testing::TestParamInfo<bool>& side) {
    return side.param ? "Remote" : "Collocated";
}

}  // namespace qv_test
