// A process killed in the middle of an initial download: the test binary runs itself again as the child that
// downloads, and kills it with SIGKILL once a few pages are stored.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <future>

#include "EndToEnd/EndToEndFixture.h"

extern char** environ;

namespace ycontacts::endtoend {
namespace {

namespace fs = std::filesystem;

// Set in the child's environment: "<folder>\n<server base URL>".
constexpr const char* childVariable = "YCONTACTS_E2E_CRASH_CHILD";
// The child reports each stored page by writing one byte to this descriptor.
constexpr int progressDescriptor = 100;

// In the child, runs before any test: syncs u1 into the folder, reporting pages, until it is killed.
class CrashChildEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        const char* value = std::getenv(childVariable);
        if (!value) return;
        const std::string text = value;
        const auto split = text.find('\n');
        SyncHarness harness(text.substr(0, split), text.substr(split + 1));
        harness.observer().hook = [](const LogLine& line) {
            if (line.text.starts_with("contactsAdded")) {
                const char page = 'p';
                [[maybe_unused]] const auto written = write(progressDescriptor, &page, 1);
            }
        };
        harness.sync()->start("u1", "o1");
        // The parent kills this process long before; should the parent be gone, do not linger.
        harness.observer().log.waitForCount("u1", "downloadComplete", 1, std::chrono::seconds(60));
        _exit(3);
    }
};

[[maybe_unused]] const auto* const crashChild = ::testing::AddGlobalTestEnvironment(new CrashChildEnvironment);

class ChildProcess {
public:
    ChildProcess(const fs::path& folder, const std::string& baseURL) {
        int descriptors[2];
        if (pipe2(descriptors, O_CLOEXEC) != 0) return;
        progress_ = descriptors[0];

        std::vector<std::string> environment{std::string(childVariable) + "=" + folder.string() + "\n" + baseURL};
        for (char** entry = environ; *entry; ++entry) {
            if (!std::string_view(*entry).starts_with(std::string(childVariable) + "=")) environment.emplace_back(*entry);
        }
        std::vector<char*> envp;
        for (auto& entry : environment) envp.push_back(entry.data());
        envp.push_back(nullptr);
        std::string program = fs::read_symlink("/proc/self/exe").string();
        std::string filter = "--gtest_filter=EndToEndCrash.*";
        char* argv[] = {program.data(), filter.data(), nullptr};
        const std::string log = (folder / "child.log").string();

        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, descriptors[1], progressDescriptor);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
        if (posix_spawn(&pid_, program.c_str(), &actions, nullptr, argv, envp.data()) != 0) pid_ = -1;
        posix_spawn_file_actions_destroy(&actions);
        close(descriptors[1]);
    }

    ~ChildProcess() {
        kill();
        if (progress_ >= 0) close(progress_);
    }

    bool running() const { return pid_ > 0; }

    // Waits for `pages` progress bytes; false when the child stopped writing first.
    bool waitForPages(int pages, std::chrono::milliseconds timeout) {
        const auto deadline = std::chrono::steady_clock::now() + timeout;
        for (int seen = 0; seen < pages;) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline -
                                                                                    std::chrono::steady_clock::now());
            pollfd entry{progress_, POLLIN, 0};
            if (left.count() <= 0 || poll(&entry, 1, static_cast<int>(left.count())) <= 0) return false;
            char buffer[16];
            const auto got = read(progress_, buffer, sizeof buffer);
            if (got <= 0) return false;
            seen += static_cast<int>(got);
        }
        return true;
    }

    // SIGKILL, then reaps the child; true when it died of that signal.
    bool kill() {
        if (pid_ <= 0) return false;
        ::kill(pid_, SIGKILL);
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = -1;
        return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    }

private:
    pid_t pid_ = -1;
    int progress_ = -1;
};

// Five times the usual data, so that the child is still syncing when it is killed.
class EndToEndCrash : public testsupport::SampleServerTest {
protected:
    EndToEndCrash()
        : SampleServerTest({.seed = 11, .users = 4, .personalContactsPerUser = 600, .orgContactsPerOrg = 300,
                            .usersWithoutOrg = 2}) {}
};

TEST_F(EndToEndCrash, AProcessKilledDuringTheInitialSyncLeavesAnIntactStoreThatTheNextProcessCompletes) {
    // Page 9 of 12 is held back, so the child cannot finish before it is killed.
    sample_server::Fault slow;
    slow.pathContains = "/self/contacts";
    slow.page = 9;
    slow.delay = std::chrono::milliseconds(60000);
    server.injectFault(slow);

    {
        ChildProcess child(folder.path(), server.baseURL());
        ASSERT_TRUE(child.running());
        ASSERT_TRUE(child.waitForPages(5, defaultWait)) << "the child stored fewer than 5 pages";
        ASSERT_TRUE(child.kill());
    }
    EXPECT_EQ(integrityCheck(folder.path() / "contacts.sqlite"), "ok");
    server.clearFaults();
    server.clearRequestLog();

    SyncHarness harness(folder.path(), server.baseURL());
    const auto stored = harness.storedContacts("u1", false);
    ASSERT_TRUE(stored);
    EXPECT_GE(stored->size(), 250u);
    EXPECT_LT(stored->size(), 600u);

    harness.sync()->start("u1", "o1");
    ASSERT_TRUE(harness.observer().log.waitUntil([](const EventLog::Lines& lines) {
        for (const auto& line : lines) {
            if (line.text.starts_with("downloadComplete") || line.text.starts_with("downloadFailed")) return true;
        }
        return false;
    }));
    EXPECT_EQ(harness.observer().log.count("u1", "downloadComplete initial"), 1u);
    EXPECT_TRUE(storeMatchesServer(harness, server, "u1"));

    // The new process went on from the page the killed one had reached, not from page 1.
    const auto requests = server.requestLog();
    ASSERT_FALSE(requests.empty());
    const int firstPage = std::stoi(requests.front().param("page"));
    EXPECT_GE(firstPage, 5);
    EXPECT_LE(firstPage, 9);
    EXPECT_NE(requests.front().path.find("/self/"), std::string::npos);
}

}  // namespace
}  // namespace ycontacts::endtoend
