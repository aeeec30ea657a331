// `ycontacts serve` and `ycontacts demo` as a person runs them.

#include <gtest/gtest.h>
#include <httplib.h>

#include <regex>

#include "Cli/CliTestSupport.h"
#include "Support/Waiting.h"

namespace {

using namespace cli_test;

TEST(CliServeTest, AnnouncesItsAddressFirstServesAndStopsOnSigterm) {
    CliProcess serve({"serve", "--contacts", "12", "--org-contacts", "5", "--token", "secret"});
    std::smatch match;
    std::string first;
    const auto announced = [&] {
        const auto out = serve.out();
        first = out.substr(0, out.find('\n'));
        return out.find('\n') != std::string::npos;
    };
    ASSERT_TRUE(ycontacts::testsupport::eventually(announced)) << serve.err();
    ASSERT_TRUE(std::regex_match(first, match, std::regex(R"(listening on http://127\.0\.0\.1:(\d+))"))) << first;

    httplib::Client client("127.0.0.1", std::stoi(match[1]));
    client.set_read_timeout(std::chrono::seconds(10));
    const auto mine = client.Get("/api/v1/accounts/self/contacts", httplib::Headers{{"Authorization", "secret"}});
    ASSERT_TRUE(mine);
    EXPECT_EQ(mine->status, 200);
    EXPECT_EQ(nlohmann::json::parse(mine->body)["total"], 12);

    serve.signal(SIGTERM);
    EXPECT_EQ(serve.wait(std::chrono::seconds(30)), 0);
}

TEST(CliDemoTest, ADemoPassesItsOwnChecksAndLeavesAGivenDataDirectoryToLaterCommands) {
    ycontacts::testsupport::TemporaryDirectory scratch;
    const auto dataDir = scratch.path() / "demo";
    const auto result =
        runCli({"demo", "--contacts", "400", "--org-contacts", "150", "--json", "--data-dir", dataDir.string()});
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    const auto report = result.json();
    ASSERT_TRUE(report.is_object()) << result.out;
    EXPECT_EQ(report["passed"], true);
    EXPECT_EQ(report["initialSync"]["stored"], (nlohmann::json{{"personal", 400}, {"org", 150}}));

    const auto status = runCli(std::vector<std::string>{"status", "--json"} + userArgs(dataDir));
    ASSERT_EQ(status.exitStatus, 0) << status.err;
    const auto changes = report["changes"];
    EXPECT_EQ(status.json()["personal"],
              400 + changes["added"]["personal"].get<int>() - changes["deleted"]["personal"].get<int>());
}

}  // namespace
