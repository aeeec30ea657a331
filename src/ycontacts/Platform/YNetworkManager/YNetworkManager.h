#pragma once
// YNetworkManager: the library's HTTP client; sends requests over libcurl, hands out cancellable task ids.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Platform/MarloComponents/YActivityMetaData.h"
#include "ycontacts/Platform/YNetworkManager/YHTTPMethod.h"
#include "ycontacts/Platform/YNetworkManager/YHTTPURLResponse.h"
#include "ycontacts/Platform/YNetworkManager/YNetworkError.h"
#include "ycontacts/Platform/YNetworkManager/YRequestPriority.h"
#include "ycontacts/Platform/YNetworkManager/YURLRequest.h"

namespace ycontacts {

// Delivers the outcome of one request. Either the server answered (any status, 4xx and 5xx included):
// `data` holds the body (empty for HEAD or an empty answer) and `response` the status and headers, with no
// `error`; or the transport failed or the task was cancelled: only `error` is set.
using YNetworkCompletion = std::function<void(std::optional<std::vector<std::uint8_t>> data,
                                              std::optional<YHTTPURLResponse> response,
                                              std::optional<YNetworkError> error)>;

// One I/O thread drives every transfer through a libcurl multi handle, so many requests share one thread
// and the connections it keeps open. Completions run on a separate pool of completion threads, never on
// the I/O thread, so a completion that parses a body or writes to a database stalls no other transfer.
//
// Behaviour shared by every request:
// - Each request gets a task id at once: an integer that increases from 1 for the client's lifetime.
// - Its completion is called exactly once, on a completion thread, with no lock of the client held.
// - Redirects are followed by libcurl, at most 5 in a row, over http and https only; the response then
//   describes the last answer and its `url` is the final URL. More than 5 give badServerResponse.
// - At most 6 requests to one host (scheme, host and port) run at once, so at most 6 connections are open
//   to it. Further requests wait in the client: the highest priority starts first, and requests of equal
//   priority start in the order they were sent.
// - Bodies compressed with gzip, deflate, brotli or zstd are accepted and delivered decompressed.
// - Connecting may take at most `Options::connectTimeout`, the whole transfer at most
//   `Options::transferTimeout`; beyond that the completion gets timedOut.
// - No proxy is used, so the proxy environment variables are not consulted: the library takes its
//   configuration only from its host.
// - A URL that cannot be parsed, or whose scheme is not http or https, still gets a task id; its completion
//   then reports badURL.
class YNetworkManager : public std::enable_shared_from_this<YNetworkManager> {
public:
    struct Options {
        // Zero falls back to libcurl's built-in limit (300 s).
        std::chrono::milliseconds connectTimeout{10000};
        // Bounds the whole transfer, from connecting to the last byte of the body; zero means no limit.
        std::chrono::milliseconds transferTimeout{60000};
        // Threads that run completions; 0 counts as 1.
        std::size_t completionThreads{2};
    };

    // Default options. (A separate constructor: g++ rejects `Options options = {}` while the enclosing
    // class is still incomplete.)
    YNetworkManager();
    explicit YNetworkManager(Options options);
    // Cancels every request still outstanding (their completions run with `cancelled`), then stops and
    // joins the I/O thread and the completion threads. Completions posted before still run.
    ~YNetworkManager();
    YNetworkManager(const YNetworkManager&) = delete;
    YNetworkManager& operator=(const YNetworkManager&) = delete;

    // The one process-wide client, created on first use with default options. It is never destroyed:
    // completions of requests still in flight at exit would otherwise reach objects already torn down.
    static std::shared_ptr<YNetworkManager> sharedInstance();

    // Sends one request. GET, HEAD and DELETE carry `params` in the URL's query (percent-encoded, added
    // after '?' or '&'); the other methods send them as an application/x-www-form-urlencoded body, or as
    // multipart/form-data (one text part per parameter) when `isMultipartData` is true.
    // `authorization` is sent verbatim as the "Authorization" header and replaces one in `headerParams`.
    // `priority` orders the request among those waiting for the same host (see above); a request that can
    // start at once is not held back by it. `metadata` and `identifier` only label the task's log lines.
    // `requestDidStartHandler`, when given, is called with the task id on the calling thread before this
    // function returns, so it always runs before the completion. Always returns a task id.
    std::optional<std::int64_t> sendRequestURL(YHTTPMethod method, const std::string& url,
                                               const std::optional<std::string>& authorization,
                                               const std::map<std::string, std::string>& headerParams,
                                               const std::map<std::string, std::string>& params,
                                               bool isMultipartData, YRequestPriority priority,
                                               const std::optional<YActivityMetaData>& metadata,
                                               const std::optional<std::string>& identifier,
                                               std::function<void(std::int64_t taskId)> requestDidStartHandler,
                                               YNetworkCompletion completionHandler);

    // Sends a request the caller prepared: its method, headers (such as "If-Modified-Since") and body as
    // given, with `authorization` as for sendRequestURL. `params` go to the query for GET, HEAD and DELETE
    // and for a request that already has a body; otherwise they become its form body. Normal priority.
    // Always returns a task id.
    std::optional<std::int64_t> send(const YURLRequest& request, const std::optional<std::string>& authorization,
                                     const std::map<std::string, std::string>& params,
                                     const std::optional<YActivityMetaData>& metadata,
                                     YNetworkCompletion completionHandler);

    // Stops the task: if it has not completed yet, its completion runs once with `cancelled`. An id that is
    // unknown or already completed is ignored. Returns at once; the completion follows on its thread.
    void cancel(std::int64_t taskId);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace ycontacts
