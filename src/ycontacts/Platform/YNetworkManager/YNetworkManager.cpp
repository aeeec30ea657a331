#include "ycontacts/Platform/YNetworkManager/YNetworkManager.h"

#include <curl/curl.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <mutex>
#include <string_view>
#include <thread>
#include <utility>
#include <variant>

#include "ycontacts/Platform/MarloComponents/Logger.h"
#include "ycontacts/Platform/MarloComponents/YWorkQueue.h"
#include "ycontacts/Platform/YNetworkManager/YURLEncoding.h"

namespace ycontacts {

namespace {

constexpr long kMaxRedirects = 5;
// Transfers running at once per host. Further requests wait in the client's own queue, by priority, so a
// burst of photo downloads opens no more than this many sockets to the contacts server. (libcurl's own
// per-host limit is not used: its pending transfers can sit until an unrelated timer fires.)
constexpr int kMaxTransfersPerHost = 6;
// Upper bound of one wait of the I/O thread; libcurl shortens it to its own next deadline, and new work or
// a stop request wakes it at once.
constexpr int kPollTimeoutMs = 1000;

void initialiseCurlOnce() {
    static std::once_flag once;
    // Never paired with curl_global_cleanup: other parts of the host process may use libcurl as well.
    std::call_once(once, [] {
        if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) {
            Logger::shared().error("libcurl global initialisation failed");
        }
    });
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
           });
}

bool hasLineBreak(std::string_view text) { return text.find_first_of("\r\n") != std::string_view::npos; }

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) return {};
    const auto last = text.find_last_not_of(" \t\r\n");
    return text.substr(first, last - first + 1);
}

YNetworkError errorForCurlCode(CURLcode code, const char* detail) {
    std::string message = curl_easy_strerror(code);
    if (detail != nullptr && detail[0] != '\0') message += std::string(": ") + detail;
    switch (code) {
        case CURLE_COULDNT_CONNECT:
        case CURLE_COULDNT_RESOLVE_HOST:
        case CURLE_COULDNT_RESOLVE_PROXY:
            return {YNetworkError::notConnectedToInternet, std::move(message)};
        case CURLE_OPERATION_TIMEDOUT:
            return {YNetworkError::timedOut, std::move(message)};
        case CURLE_URL_MALFORMAT:
            return {YNetworkError::badURL, std::move(message)};
        case CURLE_GOT_NOTHING:
        case CURLE_PARTIAL_FILE:
        case CURLE_RECV_ERROR:
        case CURLE_SEND_ERROR:
            return {YNetworkError::networkConnectionLost, std::move(message)};
        // The request's own URL was checked before sending, so an unsupported protocol comes from the
        // server: an answer that is not HTTP (read as HTTP/0.9), or a redirect to another scheme.
        case CURLE_UNSUPPORTED_PROTOCOL:
        case CURLE_WEIRD_SERVER_REPLY:
        case CURLE_BAD_CONTENT_ENCODING:
        case CURLE_TOO_MANY_REDIRECTS:
        case CURLE_HTTP2:
        case CURLE_HTTP2_STREAM:
        case CURLE_HTTP3:
            return {YNetworkError::badServerResponse, std::move(message)};
        case CURLE_ABORTED_BY_CALLBACK:
            return {YNetworkError::cancelled, std::move(message)};
        default:
            return {YNetworkError::unknown, std::move(message)};
    }
}

// "scheme://host:port" of an absolute http or https URL with a host; nothing for any other text.
std::optional<std::string> hostKeyOf(const std::string& url) {
    CURLU* parsed = curl_url();
    if (parsed == nullptr) return std::nullopt;
    std::optional<std::string> key;
    char* scheme = nullptr;
    char* host = nullptr;
    char* port = nullptr;
    if (curl_url_set(parsed, CURLUPART_URL, url.c_str(), 0) == CURLUE_OK &&
        curl_url_get(parsed, CURLUPART_SCHEME, &scheme, 0) == CURLUE_OK &&
        curl_url_get(parsed, CURLUPART_HOST, &host, 0) == CURLUE_OK &&
        curl_url_get(parsed, CURLUPART_PORT, &port, CURLU_DEFAULT_PORT) == CURLUE_OK) {
        const std::string_view schemeText(scheme);
        if ((schemeText == "http" || schemeText == "https") && host[0] != '\0') {
            key = std::string(scheme) + "://" + host + ":" + port;
        }
    }
    curl_free(scheme);
    curl_free(host);
    curl_free(port);
    curl_url_cleanup(parsed);
    return key;
}

// Everything one request needs, before it becomes a libcurl transfer.
struct OutgoingRequest {
    YHTTPMethod method = YHTTPMethod::GET;
    std::string url;
    std::vector<std::pair<std::string, std::string>> headers;
    std::optional<std::string> authorization;
    std::string body;
    // Set for a multipart/form-data body, which then replaces `body`.
    std::optional<std::map<std::string, std::string>> multipartFields;
    YRequestPriority priority = YRequestPriority::normal;
};

bool sendsParamsInQuery(YHTTPMethod method) {
    return method == YHTTPMethod::GET || method == YHTTPMethod::HEAD || method == YHTTPMethod::DELETE;
}

std::string taskLabel(std::int64_t taskId, const std::optional<std::string>& identifier,
                      const std::optional<YActivityMetaData>& metadata) {
    std::string label = std::to_string(taskId);
    if (identifier) label += " identifier " + *identifier;
    if (metadata) label += " activity " + metadata->activityName;
    return label;
}

// One request handed to libcurl. It is built on the caller's thread and then owned by the I/O thread.
struct Transfer {
    std::int64_t id = 0;
    std::string label;
    std::string hostKey;
    YRequestPriority priority = YRequestPriority::normal;
    CURL* easy = nullptr;
    curl_slist* headerList = nullptr;
    curl_mime* mime = nullptr;
    // libcurl reads the body from here while sending, without copying it.
    std::string body;
    std::vector<std::uint8_t> received;
    std::vector<std::pair<std::string, std::string>> responseHeaders;
    char errorBuffer[CURL_ERROR_SIZE] = {};
    YNetworkCompletion completion;

    Transfer() = default;
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;
    ~Transfer() {
        // The easy handle refers to the mime tree and the header list, so it goes first.
        if (easy != nullptr) curl_easy_cleanup(easy);
        curl_mime_free(mime);
        curl_slist_free_all(headerList);
    }
};

size_t receiveBody(char* data, size_t size, size_t count, void* userData) {
    auto* transfer = static_cast<Transfer*>(userData);
    const size_t length = size * count;
    transfer->received.insert(transfer->received.end(), reinterpret_cast<const std::uint8_t*>(data),
                              reinterpret_cast<const std::uint8_t*>(data) + length);
    return length;
}

size_t receiveHeader(char* data, size_t size, size_t count, void* userData) {
    auto* transfer = static_cast<Transfer*>(userData);
    const size_t length = size * count;
    const std::string_view line = trimmed(std::string_view(data, length));
    if (line.rfind("HTTP/", 0) == 0) {
        // A new status line: an interim (100) or redirect answer came before; keep only the final headers.
        transfer->responseHeaders.clear();
    } else if (const auto colon = line.find(':'); colon != std::string_view::npos && colon > 0) {
        transfer->responseHeaders.emplace_back(std::string(trimmed(line.substr(0, colon))),
                                               std::string(trimmed(line.substr(colon + 1))));
    }
    return length;
}

bool addHeader(Transfer& transfer, const std::string& name, const std::string& value) {
    if (name.empty() || hasLineBreak(name) || hasLineBreak(value)) {
        Logger::shared().warning("network task dropped a header with a line break or no name, task " +
                                 transfer.label);
        return true;
    }
    // libcurl sends "Name:" with nothing after it only when written "Name;".
    const std::string line = value.empty() ? name + ";" : name + ": " + value;
    curl_slist* extended = curl_slist_append(transfer.headerList, line.c_str());
    if (extended == nullptr) return false;
    transfer.headerList = extended;
    return true;
}

// Sets up the easy handle for the request `parts`; false when libcurl refuses an option or runs out of memory.
bool configure(Transfer& transfer, OutgoingRequest& parts, const YNetworkManager::Options& options) {
    CURL* easy = transfer.easy;
    bool ok = true;
    const auto set = [&](CURLoption option, auto value) { ok = ok && curl_easy_setopt(easy, option, value) == CURLE_OK; };

    set(CURLOPT_URL, parts.url.c_str());
    set(CURLOPT_PRIVATE, static_cast<void*>(&transfer));
    set(CURLOPT_ERRORBUFFER, transfer.errorBuffer);
    set(CURLOPT_WRITEFUNCTION, &receiveBody);
    set(CURLOPT_WRITEDATA, static_cast<void*>(&transfer));
    set(CURLOPT_HEADERFUNCTION, &receiveHeader);
    set(CURLOPT_HEADERDATA, static_cast<void*>(&transfer));
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_PROXY, "");
    set(CURLOPT_ACCEPT_ENCODING, "");
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, kMaxRedirects);
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(options.connectTimeout.count()));
    set(CURLOPT_TIMEOUT_MS, static_cast<long>(options.transferTimeout.count()));

    // The method, and the body for the methods that carry one.
    const bool carriesBody = parts.method != YHTTPMethod::GET && parts.method != YHTTPMethod::HEAD &&
                             (parts.method != YHTTPMethod::DELETE || !parts.body.empty() || parts.multipartFields);
    switch (parts.method) {
        case YHTTPMethod::GET: set(CURLOPT_HTTPGET, 1L); break;
        case YHTTPMethod::HEAD: set(CURLOPT_NOBODY, 1L); break;
        case YHTTPMethod::POST: set(CURLOPT_POST, 1L); break;
        case YHTTPMethod::PUT:
        case YHTTPMethod::DELETE:
        case YHTTPMethod::PATCH: set(CURLOPT_CUSTOMREQUEST, toRawValue(parts.method).data()); break;
    }
    if (carriesBody && parts.multipartFields) {
        transfer.mime = curl_mime_init(easy);
        ok = ok && transfer.mime != nullptr;
        for (const auto& [name, value] : *parts.multipartFields) {
            if (!ok) break;
            curl_mimepart* part = curl_mime_addpart(transfer.mime);
            ok = part != nullptr && curl_mime_name(part, name.c_str()) == CURLE_OK &&
                 curl_mime_data(part, value.data(), value.size()) == CURLE_OK;
        }
        set(CURLOPT_MIMEPOST, transfer.mime);
    } else if (carriesBody) {
        transfer.body = std::move(parts.body);
        set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(transfer.body.size()));
        set(CURLOPT_POSTFIELDS, transfer.body.data());
    }

    for (const auto& [name, value] : parts.headers) {
        if (parts.authorization && equalsIgnoringCase(name, "Authorization")) continue;
        ok = ok && addHeader(transfer, name, value);
    }
    if (parts.authorization) ok = ok && addHeader(transfer, "Authorization", *parts.authorization);
    // Without this, libcurl holds large bodies back waiting for a "100 Continue" that many servers never send.
    if (carriesBody) ok = ok && addHeader(transfer, "Expect", "");
    if (transfer.headerList != nullptr) set(CURLOPT_HTTPHEADER, transfer.headerList);
    return ok;
}

}  // namespace

struct YNetworkManager::Impl {
    struct CancelCommand {
        std::int64_t taskId;
    };
    using Command = std::variant<std::unique_ptr<Transfer>, CancelCommand>;

    Options options;
    std::atomic<std::int64_t> nextTaskId{1};
    // Drains at shutdown: every request's completion runs, even the cancellations posted by the destructor.
    YWorkQueue completions;
    CURLM* multi = nullptr;

    // Handed from callers to the I/O thread; `multi` is woken under this lock, so it cannot be woken
    // after the destructor has stopped the loop.
    std::mutex commandsMutex;
    std::vector<Command> commands;
    bool stopping = false;

    // Per host: how many of its transfers are inside the multi handle, and the ones waiting for a turn,
    // highest priority first and in sending order within one priority.
    struct HostQueue {
        int running = 0;
        std::vector<std::unique_ptr<Transfer>> waiting;
    };

    // Touched by the I/O thread only: transfers inside the multi handle by task id, and the host queues.
    std::map<std::int64_t, std::unique_ptr<Transfer>> active;
    std::map<std::string, HostQueue> hosts;
    std::thread ioThread;

    explicit Impl(Options opts)
        : options(opts), completions("network.completions", opts.completionThreads, YWorkQueue::AtShutdown::drain) {
        initialiseCurlOnce();
        multi = curl_multi_init();
        if (multi == nullptr) {
            Logger::shared().error("network manager could not create its libcurl multi handle");
            return;
        }
        ioThread = std::thread([this] { runIOLoop(); });
    }

    ~Impl() {
        {
            std::lock_guard lock(commandsMutex);
            stopping = true;
            if (multi != nullptr) curl_multi_wakeup(multi);
        }
        if (ioThread.joinable()) ioThread.join();
        if (multi != nullptr) curl_multi_cleanup(multi);
        // `completions`, destroyed after this body, runs the completions already posted and joins its threads.
    }

    std::int64_t start(OutgoingRequest parts, const std::optional<YActivityMetaData>& metadata,
                       const std::optional<std::string>& identifier,
                       const std::function<void(std::int64_t)>& requestDidStartHandler,
                       YNetworkCompletion completion) {
        auto transfer = std::make_unique<Transfer>();
        transfer->id = nextTaskId.fetch_add(1);
        transfer->label = taskLabel(transfer->id, identifier, metadata);
        transfer->completion = std::move(completion);
        const std::int64_t taskId = transfer->id;
        if (requestDidStartHandler) requestDidStartHandler(taskId);

        auto hostKey = hostKeyOf(parts.url);
        if (!hostKey) {
            Logger::shared().warning("network task has a URL that cannot be sent, task " + transfer->label);
            fail(std::move(transfer), {YNetworkError::badURL, "the URL cannot be parsed or is not http(s)"});
            return taskId;
        }
        transfer->hostKey = std::move(*hostKey);
        transfer->priority = parts.priority;
        transfer->easy = curl_easy_init();
        if (transfer->easy == nullptr || !configure(*transfer, parts, options)) {
            Logger::shared().error("network task could not be set up, task " + transfer->label);
            fail(std::move(transfer), {YNetworkError::unknown, "the request could not be set up"});
            return taskId;
        }
        Logger::shared().debug("network task queued " + std::string(toRawValue(parts.method)) + ", task " +
                               transfer->label);

        std::unique_lock lock(commandsMutex);
        if (multi == nullptr || stopping) {
            lock.unlock();
            fail(std::move(transfer), multi == nullptr
                                          ? YNetworkError{YNetworkError::unknown, "the network manager has no transport"}
                                          : YNetworkError{YNetworkError::cancelled, "the network manager is shutting down"});
            return taskId;
        }
        commands.emplace_back(std::move(transfer));
        curl_multi_wakeup(multi);
        return taskId;
    }

    void cancel(std::int64_t taskId) {
        std::lock_guard lock(commandsMutex);
        if (stopping || multi == nullptr) return;
        commands.emplace_back(CancelCommand{taskId});
        curl_multi_wakeup(multi);
    }

    // Posts the completion of a transfer that ends without an answer.
    void fail(std::unique_ptr<Transfer> transfer, YNetworkError error) {
        Logger::shared().debug("network task ended with error " + std::to_string(error.code) + ", task " +
                               transfer->label);
        deliver(std::move(transfer->completion), std::nullopt, std::nullopt, std::move(error));
    }

    void deliver(YNetworkCompletion completion, std::optional<std::vector<std::uint8_t>> data,
                 std::optional<YHTTPURLResponse> response, std::optional<YNetworkError> error) {
        if (!completion) return;
        completions.async([completion = std::move(completion), data = std::move(data),
                           response = std::move(response), error = std::move(error)]() mutable {
            completion(std::move(data), std::move(response), std::move(error));
        });
    }

    // The I/O thread: takes new work, lets libcurl move every transfer forward, reports finished ones.
    void runIOLoop() {
        for (;;) {
            std::vector<Command> pending;
            bool stop = false;
            {
                std::lock_guard lock(commandsMutex);
                pending.swap(commands);
                stop = stopping;
            }
            for (auto& command : pending) {
                if (auto* added = std::get_if<std::unique_ptr<Transfer>>(&command)) {
                    if (stop) {
                        fail(std::move(*added), {YNetworkError::cancelled, "the network manager was destroyed"});
                    } else {
                        enqueue(std::move(*added));
                    }
                } else if (!stop) {
                    cancelTask(std::get<CancelCommand>(command).taskId);
                }
            }
            if (stop) break;

            int running = 0;
            curl_multi_perform(multi, &running);
            collectFinished();
            curl_multi_poll(multi, nullptr, 0, kPollTimeoutMs, nullptr);
        }
        const YNetworkError destroyed{YNetworkError::cancelled, "the network manager was destroyed"};
        for (auto& [taskId, transfer] : active) {
            curl_multi_remove_handle(multi, transfer->easy);
            fail(std::move(transfer), destroyed);
        }
        active.clear();
        for (auto& [hostKey, host] : hosts) {
            for (auto& transfer : host.waiting) fail(std::move(transfer), destroyed);
        }
        hosts.clear();
    }

    // Starts the transfer when its host has a free slot; otherwise queues it by priority.
    void enqueue(std::unique_ptr<Transfer> transfer) {
        HostQueue& host = hosts[transfer->hostKey];
        if (host.running < kMaxTransfersPerHost) {
            startTransfer(host, std::move(transfer));
            return;
        }
        const auto before = std::find_if(host.waiting.begin(), host.waiting.end(), [&](const auto& waiting) {
            return waiting->priority < transfer->priority;
        });
        host.waiting.insert(before, std::move(transfer));
    }

    void startTransfer(HostQueue& host, std::unique_ptr<Transfer> transfer) {
        if (curl_multi_add_handle(multi, transfer->easy) != CURLM_OK) {
            fail(std::move(transfer), {YNetworkError::unknown, "the transfer could not be started"});
            return;
        }
        ++host.running;
        const std::int64_t taskId = transfer->id;
        active.emplace(taskId, std::move(transfer));
    }

    // Takes a transfer that libcurl finished or that was cancelled out of the multi handle, and gives its
    // slot to the next waiting transfer of the same host.
    std::unique_ptr<Transfer> takeActive(std::map<std::int64_t, std::unique_ptr<Transfer>>::iterator found) {
        std::unique_ptr<Transfer> transfer = std::move(found->second);
        active.erase(found);
        curl_multi_remove_handle(multi, transfer->easy);
        const auto host = hosts.find(transfer->hostKey);
        --host->second.running;
        while (host->second.running < kMaxTransfersPerHost && !host->second.waiting.empty()) {
            std::unique_ptr<Transfer> next = std::move(host->second.waiting.front());
            host->second.waiting.erase(host->second.waiting.begin());
            startTransfer(host->second, std::move(next));
        }
        if (host->second.running == 0 && host->second.waiting.empty()) hosts.erase(host);
        return transfer;
    }

    void cancelTask(std::int64_t taskId) {
        const YNetworkError cancelled{YNetworkError::cancelled, "the task was cancelled"};
        if (const auto found = active.find(taskId); found != active.end()) {
            fail(takeActive(found), cancelled);
            return;
        }
        for (auto& [hostKey, host] : hosts) {
            const auto waiting = std::find_if(host.waiting.begin(), host.waiting.end(),
                                              [&](const auto& transfer) { return transfer->id == taskId; });
            if (waiting == host.waiting.end()) continue;
            std::unique_ptr<Transfer> transfer = std::move(*waiting);
            host.waiting.erase(waiting);
            fail(std::move(transfer), cancelled);
            return;
        }
    }

    void collectFinished() {
        int queued = 0;
        while (CURLMsg* message = curl_multi_info_read(multi, &queued)) {
            if (message->msg != CURLMSG_DONE) continue;
            CURL* easy = message->easy_handle;
            const CURLcode result = message->data.result;
            void* owner = nullptr;
            curl_easy_getinfo(easy, CURLINFO_PRIVATE, &owner);
            finish(takeActive(active.find(static_cast<Transfer*>(owner)->id)), result);
        }
    }

    void finish(std::unique_ptr<Transfer> transfer, CURLcode result) {
        if (result != CURLE_OK) {
            YNetworkError error = errorForCurlCode(result, transfer->errorBuffer);
            Logger::shared().info("network task failed with " + std::to_string(error.code) + " " + error.message +
                                  ", task " + transfer->label);
            deliver(std::move(transfer->completion), std::nullopt, std::nullopt, std::move(error));
            return;
        }
        long status = 0;
        char* effectiveURL = nullptr;
        curl_easy_getinfo(transfer->easy, CURLINFO_RESPONSE_CODE, &status);
        curl_easy_getinfo(transfer->easy, CURLINFO_EFFECTIVE_URL, &effectiveURL);
        YHTTPURLResponse response;
        response.url = effectiveURL != nullptr ? effectiveURL : "";
        response.statusCode = static_cast<int>(status);
        response.headers = std::move(transfer->responseHeaders);
        Logger::shared().debug("network task answered with status " + std::to_string(status) + ", task " +
                               transfer->label);
        deliver(std::move(transfer->completion), std::move(transfer->received), std::move(response), std::nullopt);
    }
};

YNetworkManager::YNetworkManager() : YNetworkManager(Options{}) {}

YNetworkManager::YNetworkManager(Options options) : impl_(std::make_unique<Impl>(options)) {}

YNetworkManager::~YNetworkManager() = default;

std::shared_ptr<YNetworkManager> YNetworkManager::sharedInstance() {
    static auto* const instance = new std::shared_ptr<YNetworkManager>(std::make_shared<YNetworkManager>());
    return *instance;
}

std::optional<std::int64_t> YNetworkManager::sendRequestURL(
    YHTTPMethod method, const std::string& url, const std::optional<std::string>& authorization,
    const std::map<std::string, std::string>& headerParams, const std::map<std::string, std::string>& params,
    bool isMultipartData, YRequestPriority priority, const std::optional<YActivityMetaData>& metadata,
    const std::optional<std::string>& identifier, std::function<void(std::int64_t taskId)> requestDidStartHandler,
    YNetworkCompletion completionHandler) {
    OutgoingRequest parts;
    parts.method = method;
    parts.authorization = authorization;
    parts.headers.assign(headerParams.begin(), headerParams.end());
    parts.priority = priority;
    if (sendsParamsInQuery(method)) {
        parts.url = appendQuery(url, formEncode(params));
    } else {
        parts.url = url;
        if (isMultipartData) {
            parts.multipartFields = params;
        } else {
            parts.body = formEncode(params);
        }
    }
    return impl_->start(std::move(parts), metadata, identifier, requestDidStartHandler, std::move(completionHandler));
}

std::optional<std::int64_t> YNetworkManager::send(const YURLRequest& request,
                                                  const std::optional<std::string>& authorization,
                                                  const std::map<std::string, std::string>& params,
                                                  const std::optional<YActivityMetaData>& metadata,
                                                  YNetworkCompletion completionHandler) {
    OutgoingRequest parts;
    parts.method = request.method;
    parts.authorization = authorization;
    parts.headers = request.headers;
    parts.body.assign(request.body.begin(), request.body.end());
    if (sendsParamsInQuery(request.method) || !request.body.empty()) {
        parts.url = appendQuery(request.url, formEncode(params));
    } else {
        parts.url = request.url;
        parts.body = formEncode(params);
    }
    return impl_->start(std::move(parts), metadata, std::nullopt, {}, std::move(completionHandler));
}

void YNetworkManager::cancel(std::int64_t taskId) { impl_->cancel(taskId); }

}  // namespace ycontacts
