#pragma once
// YNetworkError: why a request produced no HTTP answer (the transport failed, or the task was cancelled).

#include <string>

namespace ycontacts {

// An HTTP error status (4xx, 5xx) is an answer, not a YNetworkError. The codes follow the usual
// platform URL error numbers so that callers can test for "no connection" (-1009) without knowing the
// transport underneath.
struct YNetworkError {
    // Connection refused, host unreachable, or the host name could not be resolved.
    static constexpr int notConnectedToInternet = -1009;
    // Connecting or the whole transfer took longer than the client's time-outs.
    static constexpr int timedOut = -1001;
    // The task was cancelled, or the client was destroyed before it finished.
    static constexpr int cancelled = -999;
    // The URL cannot be parsed, or its scheme is not http or https.
    static constexpr int badURL = -1000;
    // The server closed the connection early: an empty reply, or a body shorter than announced.
    static constexpr int networkConnectionLost = -1005;
    // The server's answer is not valid HTTP (garbled status line, undecodable content encoding, a redirect
    // loop longer than the client follows).
    static constexpr int badServerResponse = -1011;
    // Anything else (TLS failures among them); the message carries the transport's own text.
    static constexpr int unknown = -1;

    int code = unknown;
    std::string message;

    bool operator==(const YNetworkError&) const = default;
};

}  // namespace ycontacts
