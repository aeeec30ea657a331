#include "SampleServer/SampleServerTestSupport.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace sample_server_test {

RawReply rawGet(int port, const std::string& target, const std::string& authorization) {
    RawReply reply;
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    if (fd < 0) return reply;
    timeval timeout{10, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
        const std::string request = "GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\nAuthorization: " +
                                    authorization + "\r\nConnection: close\r\n\r\n";
        send(fd, request.data(), request.size(), MSG_NOSIGNAL);
        char buffer[8192];
        for (ssize_t n; (n = recv(fd, buffer, sizeof buffer, 0)) > 0;) reply.bytes.append(buffer, static_cast<std::size_t>(n));
    }
    close(fd);

    const auto headEnd = reply.bytes.find("\r\n\r\n");
    if (headEnd == std::string::npos) return reply;
    reply.head = reply.bytes.substr(0, headEnd);
    reply.body = reply.bytes.substr(headEnd + 4);
    if (reply.head.size() > 12) reply.status = std::stoi(reply.head.substr(9, 3));
    const auto length = reply.head.find("Content-Length: ");
    if (length != std::string::npos) reply.contentLength = std::stoul(reply.head.substr(length + 16));
    return reply;
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
