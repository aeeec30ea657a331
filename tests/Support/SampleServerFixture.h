#pragma once
// SampleServerTest: a fixture that runs the sample contacts server on 127.0.0.1 for each test, beside a scratch folder.

#include <gtest/gtest.h>

#include "Support/TemporaryDirectory.h"
#include "sample_server/SampleContactsServer.h"

namespace ycontacts::testsupport {

// A suite passes its data sizes, e.g. SampleServerTest({.seed = 11, .users = 3, .usersWithoutOrg = 1}).
class SampleServerTest : public ::testing::Test {
protected:
    explicit SampleServerTest(const sample_server::SampleServerOptions& options) : server(options) {}
    void SetUp() override { ASSERT_GT(server.start(), 0) << "the sample server did not start"; }
    void TearDown() override { server.stop(); }

    TemporaryDirectory folder;
    sample_server::SampleContactsServer server;
};

}  // namespace ycontacts::testsupport
