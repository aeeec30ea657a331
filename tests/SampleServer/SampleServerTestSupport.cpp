#include "SampleServer/SampleServerTestSupport.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace sample_server_test {
namespace {

int connectTo(int port, int timeoutSeconds) {
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    if (fd < 0) return -1;
    timeval timeout{timeoutSeconds, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) return fd;
    close(fd);
    return -1;
}

std::string getRequest(const std::string& target, const std::string& authorization, bool closeAfter) {
    return "GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\nAuthorization: " + authorization + "\r\n" +
           (closeAfter ? "Connection: close\r\n" : "") + "\r\n";
}

void parseHead(RawReply& reply, const std::string& head) {
    reply.head = head;
    if (head.size() > 12) reply.status = std::stoi(head.substr(9, 3));
    const auto length = head.find("Content-Length: ");
    if (length != std::string::npos) reply.contentLength = std::stoul(head.substr(length + 16));
}

}  // namespace

RawReply rawGet(int port, const std::string& target, const std::string& authorization) {
    RawReply reply;
    const int fd = connectTo(port, 10);
    if (fd < 0) return reply;
    const std::string request = getRequest(target, authorization, true);
    send(fd, request.data(), request.size(), MSG_NOSIGNAL);
    char buffer[8192];
    for (ssize_t n; (n = recv(fd, buffer, sizeof buffer, 0)) > 0;) reply.bytes.append(buffer, static_cast<std::size_t>(n));
    close(fd);

    const auto headEnd = reply.bytes.find("\r\n\r\n");
    if (headEnd == std::string::npos) return reply;
    parseHead(reply, reply.bytes.substr(0, headEnd));
    reply.body = reply.bytes.substr(headEnd + 4);
    return reply;
}

RawConnection::RawConnection(int port) : fd_(connectTo(port, 5)) {}

RawConnection::~RawConnection() {
    if (fd_ >= 0) close(fd_);
}

bool RawConnection::sendGets(const std::vector<std::string>& targets, const std::string& authorization) {
    std::string requests;
    for (const std::string& target : targets) requests += getRequest(target, authorization, false);
    return fd_ >= 0 && send(fd_, requests.data(), requests.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(requests.size());
}

bool RawConnection::fill() {
    char buffer[8192];
    const ssize_t n = fd_ < 0 ? -1 : recv(fd_, buffer, sizeof buffer, 0);
    if (n <= 0) return false;
    pending_.append(buffer, static_cast<std::size_t>(n));
    return true;
}

RawReply RawConnection::readReply() {
    std::size_t headEnd = std::string::npos;
    while ((headEnd = pending_.find("\r\n\r\n")) == std::string::npos)
        if (!fill()) return {};
    RawReply reply;
    parseHead(reply, pending_.substr(0, headEnd));
    const std::size_t end = headEnd + 4 + reply.contentLength.value_or(0);
    while (pending_.size() < end)
        if (!fill()) return {};
    reply.body = pending_.substr(headEnd + 4, end - headEnd - 4);
    reply.bytes = pending_.substr(0, end);
    pending_.erase(0, end);
    return reply;
}

bool RawConnection::closedByServer() {
    char byte = 0;
    return pending_.empty() && fd_ >= 0 && recv(fd_, &byte, 1, 0) == 0;
}

JsonReply getJson(const sample_server::SampleContactsServer& server, const std::string& path,
                  const httplib::Params& params, const std::string& authorization) {
    httplib::Client client(server.baseURL());
    JsonReply reply;
    const auto result = client.Get(path, params, httplib::Headers{{"Authorization", authorization}});
    if (!result) return reply;
    reply.status = result->status;
    reply.body = nlohmann::json::parse(result->body, nullptr, false);
    return reply;
}

sample_server::SampleServerOptions smallOptions(std::uint64_t seed) {
    sample_server::SampleServerOptions options;
    options.seed = seed;
    options.users = 3;
    options.usersPerOrg = 2;
    options.usersWithoutOrg = 1;
    options.personalContactsPerUser = 45;
    options.orgContactsPerOrg = 30;
    return options;
}

}  // namespace sample_server_test
