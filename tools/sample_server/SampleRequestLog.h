#pragma once
// SampleRequestLog: every request the sample server received, for tests that check what a client sent.

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace sample_server {

struct LoggedRequest {
    std::string method;
    std::string path;
    // Path and query exactly as received.
    std::string target;
    // Decoded query values.
    std::multimap<std::string, std::string> params;
    std::string authorization;
    std::string ifModifiedSince;

    // The first value of a query key, or an empty text.
    std::string param(const std::string& key) const;
    bool hasParam(const std::string& key) const { return params.count(key) != 0; }
};

class SampleRequestLog {
public:
    void append(LoggedRequest request);
    std::vector<LoggedRequest> entries() const;
    void clear();

private:
    mutable std::mutex mutex_;
    std::vector<LoggedRequest> entries_;
};

}  // namespace sample_server
