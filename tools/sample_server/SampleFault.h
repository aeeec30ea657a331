#pragma once
// Fault and SampleFaultRegistry: failures that tests ask the sample server to play on matching requests.

#include <chrono>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace sample_server {

struct Fault {
    // Matches requests whose path contains this text (an empty text matches every path).
    std::string pathContains{};
    // When set, only requests whose "page" query value is this number match.
    std::optional<int> page{};
    // How many matching requests the fault serves before it is used up.
    int times = 1;
    // Answer with this HTTP status and an error body instead of the real reply.
    std::optional<int> status{};
    // Announce the real reply's full Content-Length, send half of the body, then close the connection.
    bool truncateBody = false;
    // Send the first half of the real reply as a complete body (Content-Length matches): unparseable JSON.
    bool malformedBody = false;
    // Wait this long before answering (stopping the server cuts the wait short).
    std::chrono::milliseconds delay{0};
    // Close the connection without sending anything.
    bool dropConnection = false;
    // Answer {"errors":[{"message":"not found"}],"status_code":404} with HTTP status 200, or with `status`
    // when that is set too.
    bool error404Envelope = false;
};

class SampleFaultRegistry {
public:
    void add(Fault fault);
    void clear();
    // The first fault that matches, with one use consumed; used-up faults are removed.
    std::optional<Fault> take(const std::string& path, std::optional<int> page);
    std::size_t pending() const;

private:
    mutable std::mutex mutex_;
    std::vector<Fault> faults_;
};

}  // namespace sample_server
