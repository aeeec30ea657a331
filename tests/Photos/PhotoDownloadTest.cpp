// Photo downloads against a loopback server that answers exactly what a test asks for.

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>

#include "Platform/YNetworkManager/NetworkTestServers.h"
#include "Support/FakeAuthentication.h"
#include "Support/Waiting.h"
#include "ycontacts/Contacts/Data/Network/HttpHeaderDate.h"
#include "ycontacts/Contacts/Data/Network/YContactsURLConstructor.h"
#include "ycontacts/YNetworkManagerDependent/YContactsNetworkService.h"

namespace ycontacts {
namespace {

using Response = std::shared_ptr<const YContactImageNetworkResponse>;
using Headers = std::vector<std::pair<std::string, std::string>>;
using testsupport::Received;

const std::string dateHeader = "Sun, 22 Nov 2026 18:45:00 GMT";
const std::string lastModifiedHeader = "Sat, 21 Nov 2026 08:00:00 GMT";

class PhotoDownload : public ::testing::Test {
protected:
    PhotoDownload() { authorization->set("u1", "token-u1", YContactsHost::idc(server.url(""))); }

    Response ask(const std::string& yuid, std::optional<std::chrono::system_clock::time_point> lastModified = {}) {
        auto answers = std::make_shared<Received<Response>>();
        network->getContactImage(yuid, "y7", false, lastModified, std::nullopt, YContactType::user,
                                 [answers](Response response) { answers->add(response); });
        return answers->waitFor(1) ? answers->values().front() : nullptr;
    }

    std::mutex mutex;
    int replyStatus = 200;
    Headers replyHeaders{{"Date", dateHeader}};
    std::atomic<bool> holdReplies{false};
    testing::LocalHTTPServer server{[this](httplib::Server& routes, testing::LocalHTTPServer& self) {
        routes.Get("/file/download", [this, &self](const httplib::Request& request, httplib::Response& response) {
            self.record(request);
            if (holdReplies) self.holdUntilReleased();
            std::lock_guard lock(mutex);
            response.status = replyStatus;
            for (const auto& [name, value] : replyHeaders) response.set_header(name, value);
            if (replyStatus == 200) response.set_content("photo-" + request.get_param_value("fs"), "image/png");
        });
    }};
    std::shared_ptr<testsupport::FakeAuthentication> authorization =
        std::make_shared<testsupport::FakeAuthentication>();
    std::shared_ptr<YContactsNetworkService> network =
        std::make_shared<YContactsNetworkService>(authorization, std::make_shared<YContactsURLConstructor>(), nullptr);
};

TEST_F(PhotoDownload, CallersOfOnePhotoShareOneRequestAndOneResponseInCallOrder) {
    holdReplies = true;
    Received<std::pair<int, Response>> normal;
    Received<Response> thumbnail;
    for (int caller = 0; caller < 3; ++caller)
        network->getContactImage("u1", "y7", false, std::nullopt, std::nullopt, YContactType::user,
                                 [&, caller](Response response) {
                                     normal.add({caller, response});
                                 });
    network->getContactImage("u1", "y7", true, std::nullopt, std::nullopt, YContactType::user,
                             [&](Response response) { thumbnail.add(response); });
    ASSERT_TRUE(server.waitForRequests(2, std::chrono::seconds(10)));
    server.releaseHeld();
    ASSERT_TRUE(normal.waitFor(3));
    ASSERT_TRUE(thumbnail.waitFor(1));

    const auto answers = normal.values();
    for (int caller = 0; caller < 3; ++caller) {
        EXPECT_EQ(answers[caller].first, caller);
        EXPECT_EQ(answers[caller].second, answers[0].second) << "one shared response object";
    }
    const auto text = [](const Response& r) { return std::string(r->imageData->begin(), r->imageData->end()); };
    EXPECT_EQ(text(answers[0].second), "photo-medium");
    EXPECT_EQ(text(thumbnail.values()[0]), "photo-thumb");
    EXPECT_EQ(server.seen().size(), 2u) << "one request per size";
    ASSERT_TRUE(ask("u1")) << "a finished download frees its key";
    EXPECT_EQ(server.seen().size(), 3u);
}

TEST_F(PhotoDownload, StatusesAndHeadersBecomeTheResponse) {
    const auto date = httpHeaderDate.parse(dateHeader);
    const auto lastModified = httpHeaderDate.parse(lastModifiedHeader);
    struct Case {
        int status;
        Headers headers;
        YContactImageStatus imageStatus;
        std::optional<std::chrono::system_clock::time_point> serverDate;
    };
    const Headers both{{"Date", dateHeader}, {"Last-Modified", lastModifiedHeader}};
    const Headers onlyLastModified{{"Last-Modified", lastModifiedHeader}};
    const std::vector<Case> cases = {
        {200, both, YContactImageStatus::newImage, date},
        {204, onlyLastModified, YContactImageStatus::noContent, lastModified},
        {403, both, YContactImageStatus::noContent, date},
        {304, both, YContactImageStatus::notModified, date},
        {304, onlyLastModified, YContactImageStatus::notModified, std::nullopt},
        {500, both, YContactImageStatus::noContent, std::nullopt},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const Case& c = cases[i];
        {
            std::lock_guard lock(mutex);
            replyStatus = c.status;
            replyHeaders = c.headers;
        }
        // Every other ask carries the cached copy's date, which must travel as If-Modified-Since.
        const auto sent = i % 2 == 0 ? lastModified : std::nullopt;
        const Response response = ask("u1", sent);
        ASSERT_TRUE(response) << "case " << i;
        EXPECT_EQ(response->imageStatus, c.imageStatus) << "case " << i;
        EXPECT_EQ(response->error, c.status == 500 ? std::optional(YContactError::unknownError) : std::nullopt)
            << "case " << i;
        EXPECT_EQ(response->serverDate, c.serverDate) << "case " << i;
        EXPECT_EQ(response->imageData.has_value(), c.status == 200) << "case " << i;
        EXPECT_EQ(server.seen().back().header("If-Modified-Since"), sent ? lastModifiedHeader : "") << "case " << i;
    }
}

TEST_F(PhotoDownload, NoConnectionAndNoAddressAreReportedAndFreeTheKey) {
    authorization->set("offline", "t",
                       YContactsHost::idc("http://127.0.0.1:" + std::to_string(testing::closedLoopbackPort())));
    authorization->set("nowhere", "t", YContactsHost::other());
    for (const auto& [yuid, error] :
         {std::pair{"offline", YContactError::networkFailure}, std::pair{"nowhere", YContactError::urlError},
          std::pair{"nobody", YContactError::authorizationError}}) {
        for (int attempt = 0; attempt < 2; ++attempt) {
            const Response response = ask(yuid);
            ASSERT_TRUE(response) << yuid << " attempt " << attempt;
            EXPECT_EQ(response->error, error) << yuid;
        }
    }
}

}  // namespace
}  // namespace ycontacts
