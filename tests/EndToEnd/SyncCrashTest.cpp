// A process killed in the middle of an initial download: the test binary runs itself again as the child that
// downloads, and kills it with SIGKILL once a few pages are stored.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cstdlib>
#include <thread>

#include "EndToEnd/EndToEndFixture.h"
#include "Support/Waiting.h"

extern char** environ;

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

// Starts the test binary again as the downloading child, its output in the folder's child.log.
pid_t startChild(const fs::path& folder, const std::string& baseURL) {
    std::vector<std::string> environment{std::string(childVariable) + "=" + folder.string() + "\n" + baseURL};
    for (char** entry = environ; *entry; ++entry) environment.emplace_back(*entry);
    std::vector<char*> envp;
    for (auto& entry : environment) envp.push_back(entry.data());
    envp.push_back(nullptr);
    std::string program = fs::read_symlink("/proc/self/exe").string();
    std::string filter = "--gtest_filter=EndToEndCrash.*";
    char* argv[] = {program.data(), filter.data(), nullptr};
    const std::string log = (folder / "child.log").string();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    pid_t pid = -1;
    if (posix_spawn(&pid, program.c_str(), &actions, nullptr, argv, envp.data()) != 0) pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

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
    const pid_t child = startChild(folder.path(), server.baseURL());
    ASSERT_GT(child, 0);
    // The child asks for page 6 once it has stored five pages; it is killed while it handles that page.
    const bool sixthAsked = testsupport::eventually([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        const auto requests = server.requestLog();
        return !requests.empty() && std::atoi(requests.back().param("page").c_str()) >= 6;
    });
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(sixthAsked) << "the child stored fewer than 5 pages";
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
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
