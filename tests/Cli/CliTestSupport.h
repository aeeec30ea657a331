#pragma once
// Runs the built `ycontacts` tool as a subprocess with a time limit, beside a sample server.

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Support/SampleServerFixture.h"

#ifndef YCONTACTS_CLI_PATH
#error "YCONTACTS_CLI_PATH names the built ycontacts tool; tools/ycontacts_cli/CMakeLists.txt defines it"
#endif

extern char** environ;

namespace cli_test {

struct CliResult {
    // The exit status, or 128 + the signal that ended the process; -1 when it had to be killed.
    int exitStatus = -1;
    std::string out;
    std::string err;

    nlohmann::json json() const { return nlohmann::json::parse(out, nullptr, false); }
};

// A running `ycontacts ARGS...` (or `program ARGS...`) with stdin closed and stdout and stderr in files of its
// own folder. The environment is the test's own without the YCONTACTS_* variables, plus `variables`.
class CliProcess {
public:
    explicit CliProcess(const std::vector<std::string>& args, std::vector<std::string> variables = {},
                        const std::string& program = YCONTACTS_CLI_PATH) {
        std::vector<std::string> argv{program};
        argv.insert(argv.end(), args.begin(), args.end());
        std::vector<std::string> environment = std::move(variables);
        for (char** entry = environ; *entry; ++entry) {
            if (std::strncmp(*entry, "YCONTACTS_", 10) != 0) environment.emplace_back(*entry);
        }
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions, 1, files_.file("out").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        posix_spawn_file_actions_addopen(&actions, 2, files_.file("err").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (posix_spawn(&pid_, argv[0].c_str(), &actions, nullptr, pointers(argv).data(),
                        pointers(environment).data()) != 0) {
            pid_ = -1;
        }
        posix_spawn_file_actions_destroy(&actions);
    }
    ~CliProcess() { wait(std::chrono::seconds(0)); }
    CliProcess(const CliProcess&) = delete;
    CliProcess& operator=(const CliProcess&) = delete;

    void signal(int number) { kill(pid_, number); }
    // The exit status once the process ended; -1 when it was still running after `timeout` (it is then killed).
    int wait(std::chrono::seconds timeout) {
        const auto deadline = std::chrono::steady_clock::now() + timeout;
        int raw = 0;
        while (pid_ > 0 && waitpid(pid_, &raw, WNOHANG) == 0) {
            if (std::chrono::steady_clock::now() < deadline) {
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
                continue;
            }
            kill(pid_, SIGKILL);
            waitpid(pid_, &raw, 0);
            raw = -1;
        }
        const bool ran = pid_ > 0;
        pid_ = -1;
        if (!ran || raw == -1) return -1;
        return WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
    }
    std::string out() const { return read("out"); }
    std::string err() const { return read("err"); }

private:
    std::string read(const char* name) const {
        std::ifstream in(files_.file(name));
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }
    static std::vector<char*> pointers(std::vector<std::string>& texts) {
        std::vector<char*> list;
        for (auto& text : texts) list.push_back(text.data());
        list.push_back(nullptr);
        return list;
    }
    ycontacts::testsupport::TemporaryDirectory files_;
    pid_t pid_ = -1;
};

// Runs the tool to its end; a run past `timeout` is killed and reads as exit status -1.
inline CliResult runCli(const std::vector<std::string>& args,
                        std::chrono::seconds timeout = std::chrono::seconds(120)) {
    CliProcess process(args);
    const int status = process.wait(timeout);
    return {status, process.out(), process.err()};
}

inline std::vector<std::string> operator+(std::vector<std::string> a, const std::vector<std::string>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// The arguments that reach `server` as the user with its token (and organisation), and keep data in `dataDir`.
inline std::vector<std::string> serverArgs(const sample_server::SampleContactsServer& server,
                                           const std::string& yuid = "u1") {
    std::vector<std::string> args{"--server", server.baseURL(), "--token", server.userToken(yuid)};
    if (const auto yoid = server.yoidOf(yuid)) args.insert(args.end(), {"--org", *yoid});
    return args;
}
inline std::vector<std::string> userArgs(const std::filesystem::path& dataDir, const std::string& yuid = "u1") {
    return {"--user", yuid, "--data-dir", dataDir.string()};
}

// u1 and u2 share organisation o1, u3 has none.
class CliServerTest : public ycontacts::testsupport::SampleServerTest {
protected:
    CliServerTest()
        : SampleServerTest(
              {.seed = 11, .users = 3, .personalContactsPerUser = 150, .orgContactsPerOrg = 80, .usersWithoutOrg = 1}) {
    }
};

}  // namespace cli_test
