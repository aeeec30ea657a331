#include "Cli/CliTestSupport.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#ifndef YCONTACTS_CLI_PATH
#error "YCONTACTS_CLI_PATH names the built ycontacts tool; tools/ycontacts_cli/CMakeLists.txt defines it"
#endif

extern char** environ;

namespace cli_test {

namespace {

using Clock = std::chrono::steady_clock;

int statusOf(int raw) {
    if (WIFEXITED(raw)) return WEXITSTATUS(raw);
    if (WIFSIGNALED(raw)) return 128 + WTERMSIG(raw);
    return -1;
}

// The test's environment without the variables the tool reads its options from.
std::vector<std::string> cleanEnvironment() {
    std::vector<std::string> variables;
    for (char** entry = environ; *entry; ++entry) {
        if (std::strncmp(*entry, "YCONTACTS_", 10) != 0) variables.emplace_back(*entry);
    }
    return variables;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> list;
    for (auto& text : texts) list.push_back(text.data());
    list.push_back(nullptr);
    return list;
}

// Starts the tool with stdout and stderr on new pipes (read ends returned) and stdin on /dev/null.
int spawn(const std::vector<std::string>& args, int& outRead, int* errRead) {
    int outPipe[2];
    int errPipe[2] = {-1, -1};
    if (pipe2(outPipe, O_CLOEXEC) != 0) throw std::runtime_error("pipe failed");
    if (errRead && pipe2(errPipe, O_CLOEXEC) != 0) throw std::runtime_error("pipe failed");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, outPipe[1], 1);
    posix_spawn_file_actions_adddup2(&actions, errRead ? errPipe[1] : outPipe[1], 2);

    std::vector<std::string> argv{cliPath()};
    argv.insert(argv.end(), args.begin(), args.end());
    auto environment = cleanEnvironment();
    auto argvPointers = pointers(argv);
    auto environmentPointers = pointers(environment);
    pid_t pid = -1;
    const int failed =
        posix_spawn(&pid, argv[0].c_str(), &actions, nullptr, argvPointers.data(), environmentPointers.data());
    posix_spawn_file_actions_destroy(&actions);
    close(outPipe[1]);
    if (errRead) close(errPipe[1]);
    if (failed != 0) {
        close(outPipe[0]);
        if (errRead) close(errPipe[0]);
        throw std::runtime_error("cannot start " + cliPath() + ": " + std::strerror(failed));
    }
    outRead = outPipe[0];
    if (errRead) *errRead = errPipe[0];
    return pid;
}

}  // namespace

nlohmann::json CliResult::json() const { return nlohmann::json::parse(out, nullptr, false); }

std::vector<std::string> CliResult::errLines() const {
    std::vector<std::string> lines;
    std::istringstream stream(err);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

std::string cliPath() { return YCONTACTS_CLI_PATH; }

CliResult runCli(const std::vector<std::string>& args, std::chrono::seconds timeout) {
    CliResult result;
    int outRead = -1;
    int errRead = -1;
    const int pid = spawn(args, outRead, &errRead);
    const auto deadline = Clock::now() + timeout;
    pollfd fds[2] = {{outRead, POLLIN, 0}, {errRead, POLLIN, 0}};
    std::string* sinks[2] = {&result.out, &result.err};
    int open = 2;
    while (open > 0) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) {
            result.timedOut = true;
            break;
        }
        if (poll(fds, 2, static_cast<int>(left)) < 0 && errno != EINTR) break;
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd < 0 || !(fds[i].revents & (POLLIN | POLLHUP | POLLERR))) continue;
            char buffer[4096];
            const auto got = read(fds[i].fd, buffer, sizeof(buffer));
            if (got > 0) {
                sinks[i]->append(buffer, static_cast<std::size_t>(got));
            } else {
                close(fds[i].fd);
                fds[i].fd = -1;
                --open;
            }
        }
    }
    for (auto& fd : fds)
        if (fd.fd >= 0) close(fd.fd);
    if (result.timedOut) kill(pid, SIGKILL);
    int raw = 0;
    waitpid(pid, &raw, 0);
    result.exitStatus = result.timedOut ? -1 : statusOf(raw);
    return result;
}

CliProcess::CliProcess(const std::vector<std::string>& args) { pid_ = spawn(args, out_, nullptr); }

CliProcess::~CliProcess() {
    if (!reaped_) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    close(out_);
}

std::optional<std::string> CliProcess::readLine(std::chrono::seconds timeout) {
    const auto deadline = Clock::now() + timeout;
    while (true) {
        if (const auto end = pending_.find('\n'); end != std::string::npos) {
            std::string line = pending_.substr(0, end);
            pending_.erase(0, end + 1);
            return line;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) return std::nullopt;
        pollfd fd{out_, POLLIN, 0};
        if (poll(&fd, 1, static_cast<int>(left)) <= 0) continue;
        char buffer[1024];
        const auto got = read(out_, buffer, sizeof(buffer));
        if (got <= 0) return std::nullopt;
        pending_.append(buffer, static_cast<std::size_t>(got));
    }
}

void CliProcess::signal(int number) { kill(pid_, number); }

std::optional<int> CliProcess::wait(std::chrono::seconds timeout) {
    // Output ends when the process ends: stdout and stderr are its only writers of the pipe.
    const auto deadline = Clock::now() + timeout;
    bool ended = false;
    while (!ended && Clock::now() < deadline) {
        const auto left = std::chrono::duration_cast<std::chrono::seconds>(deadline - Clock::now());
        ended = !readLine(std::max(left, std::chrono::seconds(1))).has_value() && Clock::now() < deadline;
    }
    int raw = 0;
    if (!ended) kill(pid_, SIGKILL);
    waitpid(pid_, &raw, 0);
    reaped_ = true;
    if (!ended) return std::nullopt;
    return statusOf(raw);
}

std::vector<std::string> serverArgs(const sample_server::SampleContactsServer& server, const std::string& yuid) {
    std::vector<std::string> args{"--server", server.baseURL(), "--token", server.userToken(yuid)};
    if (const auto yoid = server.yoidOf(yuid)) args.insert(args.end(), {"--org", *yoid});
    return args;
}

std::vector<std::string> userArgs(const std::filesystem::path& dataDir, const std::string& yuid) {
    return {"--user", yuid, "--data-dir", dataDir.string()};
}

std::vector<std::string> operator+(std::vector<std::string> a, const std::vector<std::string>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

}  // namespace cli_test
