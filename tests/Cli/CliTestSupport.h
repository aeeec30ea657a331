#pragma once
// Helpers for the command line tool's tests: run the built `ycontacts` as a subprocess with a time limit,
// start the sample server, and read the tool's JSON output.

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "Support/SampleServerFixture.h"

namespace cli_test {

struct CliResult {
    // The exit status, or 128 + the signal that ended the process; -1 when it had to be killed.
    int exitStatus = -1;
    bool timedOut = false;
    std::string out;
    std::string err;

    // stdout parsed as JSON (a discarded value when it is not JSON).
    nlohmann::json json() const;
    // The lines of stderr without the empty last one.
    std::vector<std::string> errLines() const;
};

// Where the build put the tool.
std::string cliPath();

// Runs `ycontacts ARGS...` with stdin closed; kills it once `timeout` has passed. The environment is the
// test's own without the tool's YCONTACTS_* variables.
CliResult runCli(const std::vector<std::string>& args, std::chrono::seconds timeout = std::chrono::seconds(120));

// A running `ycontacts` whose output is read line by line, for `serve`.
class CliProcess {
public:
    explicit CliProcess(const std::vector<std::string>& args);
    ~CliProcess();
    CliProcess(const CliProcess&) = delete;
    CliProcess& operator=(const CliProcess&) = delete;

    // The next line of stdout, without its newline; absent at end of output or after `timeout`.
    std::optional<std::string> readLine(std::chrono::seconds timeout);
    void signal(int number);
    // The exit status once the process ended, or absent after `timeout` (the process is then killed).
    std::optional<int> wait(std::chrono::seconds timeout);

private:
    int pid_ = -1;
    int out_ = -1;
    std::string pending_;
    bool reaped_ = false;
};

// Small data: u1 and u2 share organisation o1, u3 has none.
inline const sample_server::SampleServerOptions cliServerOptions{
    .seed = 11, .users = 3, .personalContactsPerUser = 150, .orgContactsPerOrg = 80, .usersWithoutOrg = 1};

// The sample server started for each test, and a scratch folder for the tool's data.
class CliServerTest : public ycontacts::testsupport::SampleServerTest {
protected:
    CliServerTest() : SampleServerTest(cliServerOptions) {}
};

// The arguments that reach `server` as u1 of o1 with its token, and keep data in `dataDir`.
std::vector<std::string> serverArgs(const sample_server::SampleContactsServer& server, const std::string& yuid = "u1");
std::vector<std::string> userArgs(const std::filesystem::path& dataDir, const std::string& yuid = "u1");

// `a` followed by `b`.
std::vector<std::string> operator+(std::vector<std::string> a, const std::vector<std::string>& b);

}  // namespace cli_test
