// A process killed in the middle of an initial download: the test binary runs itself again as the child that
// downloads, and kills it with SIGKILL once a few pages are stored.
#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

#include "Cli/CliTestSupport.h"
#include "EndToEnd/EndToEndFixture.h"
#include "Support/Waiting.h"

namespace ycontacts::endtoend {
namespace {

namespace fs = std::filesystem;

// Set in the child's environment: "<folder>\n<server base URL>".
constexpr const char* childVariable = "YCONTACTS_E2E_CRASH_CHILD";

// In the child, runs before any test: syncs u1 into the folder until it is killed.
class CrashChildEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        const char* value = std::getenv(childVariable);
        if (!value) return;
        const std::string text = value;
        const auto split = text.find('\n');
        SyncHarness harness(text.substr(0, split), text.substr(split + 1));
        harness.sync()->start("u1", "o1");
        // The parent kills this process long before; should the parent be gone, do not linger.
        harness.observer().log.waitForCount("u1", {"downloadComplete"}, 1, std::chrono::seconds(60));
        _exit(3);
    }
};

[[maybe_unused]] const auto* const crashChild = ::testing::AddGlobalTestEnvironment(new CrashChildEnvironment);

// Five times the usual data, so that the child is still syncing when it is killed.
class EndToEndCrash : public testsupport::SampleServerTest {
protected:
    EndToEndCrash()
        : SampleServerTest({.seed = 11, .users = 4, .personalContactsPerUser = 600, .orgContactsPerOrg = 300,
                            .usersWithoutOrg = 2}) {}
};

TEST_F(EndToEndCrash, AProcessKilledDuringTheInitialSyncLeavesAnIntactStoreThatTheNextProcessCompletes) {
    // Page 9 of 12 is held back, so the child cannot finish before it is killed.
    server.injectFault({.pathContains = "/self/contacts", .page = 9, .delay = std::chrono::minutes(1)});
    // The test binary again, as the downloading child.
    cli_test::CliProcess child({"--gtest_filter=EndToEndCrash.*"},
                               {std::string(childVariable) + "=" + folder.path().string() + "\n" + server.baseURL()},
                               fs::read_symlink("/proc/self/exe").string());
    // The child asks for page 6 once it has stored five pages; it is killed while it handles that page.
    const bool sixthAsked = testsupport::eventually([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        const auto requests = server.requestLog();
        return !requests.empty() && std::atoi(requests.back().param("page").c_str()) >= 6;
    });
    child.signal(SIGKILL);
    ASSERT_EQ(child.wait(std::chrono::seconds(30)), 128 + SIGKILL) << child.out() << child.err();
    ASSERT_TRUE(sixthAsked) << "the child stored fewer than 5 pages";
    EXPECT_EQ(sqlAnswer(folder.path() / "contacts.sqlite", "PRAGMA integrity_check"), "ok");
    server.clearFaults();
    server.clearRequestLog();

    SyncHarness harness(folder.path(), server.baseURL());
    const auto stored = harness.storedContacts("u1", false);
    ASSERT_TRUE(stored);
    EXPECT_GE(stored->size(), 250u);
    EXPECT_LT(stored->size(), 600u);
    harness.sync()->start("u1", "o1");
    ASSERT_TRUE(harness.observer().log.waitForCount("u1", {"downloadComplete", "downloadFailed"}, 1));
    EXPECT_EQ(harness.observer().log.count("u1", {"downloadComplete initial"}), 1u);
    EXPECT_TRUE(storeMatchesServer(harness, server, "u1"));

    // The new process went on from the page the killed one had reached, not from page 1.
    const auto requests = server.requestLog();
    ASSERT_FALSE(requests.empty());
    EXPECT_NE(requests.front().path.find("/self/"), std::string::npos);
    EXPECT_GE(std::stoi(requests.front().param("page")), 6);
    EXPECT_LE(std::stoi(requests.front().param("page")), 9);
}

}  // namespace
}  // namespace ycontacts::endtoend
