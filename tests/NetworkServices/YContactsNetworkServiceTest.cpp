#include "ycontacts/YNetworkManagerDependent/YContactsNetworkService.h"

#include <gtest/gtest.h>

#include <future>
#include <map>
#include <mutex>

#include "Platform/PlatformTestSupport.h"
#include "Platform/YNetworkManager/NetworkTestServers.h"
#include "ycontacts/Contacts/Data/Network/YContactsParser.h"
#include "ycontacts/Contacts/Data/Network/YContactsURLConstructor.h"

namespace ycontacts {
namespace {

using platformtest::becomesReady;
using testing::LocalHTTPServer;

// Answers at once with the configured header and host per user.
class FakeAuthentication : public YContactsAuthenticationContract {
public:
    void getAuthorizationHeader(const std::string& yuid, AuthorizationCallback callback) override {
        std::optional<std::string> header;
        {
            std::lock_guard lock(mutex);
            if (auto found = headers.find(yuid); found != headers.end()) header = found->second;
        }
        callback(header, header ? std::nullopt : std::optional<std::string>("no session"));
    }
    std::optional<YContactsHost> getContactsHost(const std::string& yuid) override {
        std::lock_guard lock(mutex);
        auto found = hosts.find(yuid);
        return found == hosts.end() ? std::nullopt : std::optional<YContactsHost>(found->second);
    }

    std::mutex mutex;
    std::map<std::string, std::string> headers;
    std::map<std::string, YContactsHost> hosts;
};

constexpr const char* pageBody =
    R"({"contacts":[{"contact_id":"1","first_name":"Ann","created_time":500},)"
    R"({"contact_id":"2","first_name":"Bo","created_time":1500},{"contact_id":"3","is_deleted":true}],"has_more":true})";

// A contacts server that accepts only "token-u1" and serves one page to every contacts path.
void serveContacts(httplib::Server& server, LocalHTTPServer& self) {
    auto contacts = [&self](const httplib::Request& request, httplib::Response& response) {
        self.record(request);
        if (request.get_header_value("Authorization") != "token-u1") {
            response.status = 401;
            response.set_content(R"({"errors":[{"message":"invalid authorization"}],"status_code":401})",
                                 "application/json");
            return;
        }
        response.set_content(pageBody, "application/json");
    };
    server.Get("/api/v1/accounts/self/contacts", contacts);
    server.Get("/api/v1/sync/org/contacts", contacts);
    server.Get("/api/v2/accounts/u1/contacts/ids", [&self](const httplib::Request& request, httplib::Response& response) {
        self.record(request);
        response.set_content(R"({"contacts":[{"contact_id":"2","usage_count":8}]})", "application/json");
    });
}

class YContactsNetworkServiceTest : public ::testing::Test {
protected:
    std::shared_ptr<YContactsNetworkService> makeService() {
        return std::make_shared<YContactsNetworkService>(authentication, std::make_shared<YContactsURLConstructor>(),
                                                         std::make_shared<YContactsParser>());
    }
    std::string base() const { return "http://127.0.0.1:" + std::to_string(server.port()); }

    LocalHTTPServer server{serveContacts};
    std::shared_ptr<FakeAuthentication> authentication = std::make_shared<FakeAuthentication>();
};

std::optional<YContactNetworkResponse> fetchPage(YContactsNetworkService& service, const std::string& yuid,
                                                 bool isOrg, std::optional<double> updatedTime, bool& answered) {
    std::promise<std::optional<YContactNetworkResponse>> promise;
    auto future = promise.get_future();
    service.getContacts(yuid, std::nullopt, isOrg, 2, 100, updatedTime,
                        [&promise](std::optional<YContactNetworkResponse> response) { promise.set_value(response); });
    answered = becomesReady(future);
    return answered ? future.get() : std::nullopt;
}

TEST_F(YContactsNetworkServiceTest, FullAndIncrementalPagesComeBackParsedAndUnregistered) {
    authentication->headers["u1"] = "token-u1";
    authentication->hosts.emplace("u1", YContactsHost::idc(base()));
    auto service = makeService();

    bool answered = false;
    auto full = fetchPage(*service, "u1", false, std::nullopt, answered);
    ASSERT_TRUE(answered);
    ASSERT_TRUE(full);
    EXPECT_FALSE(full->error);
    EXPECT_TRUE(full->hasMore);
    EXPECT_EQ(full->count, 3);
    EXPECT_EQ(service->taskIds("u1"), std::vector<std::int64_t>{});

    auto sync = fetchPage(*service, "u1", true, 1000.0, answered);
    ASSERT_TRUE(answered);
    ASSERT_TRUE(sync && sync->newContacts && sync->updatedContacts && sync->deletedContacts);
    EXPECT_EQ(sync->newContacts->at(0).contactId, "2");
    EXPECT_TRUE(sync->newContacts->at(0).isOrg);
    EXPECT_EQ(sync->updatedContacts->at(0).contactId, "1");
    EXPECT_EQ(*sync->deletedContacts, std::vector<std::string>{"3"});

    const auto seen = server.seen();
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].target, "/api/v1/accounts/self/contacts?"
                              "include=emails%2Cphones%2Curls%2Cusage_count%2Ccategories%2Cshow_deleted&page=2"
                              "&per_page=100");
    EXPECT_EQ(seen[1].path, "/api/v1/sync/org/contacts");
    EXPECT_NE(seen[1].target.find("show_deleted"), std::string::npos);
    EXPECT_NE(seen[1].target.find("filter_updated_time=1000"), std::string::npos);
}

TEST_F(YContactsNetworkServiceTest, WrongTokenAndUnreachableServerGiveNoPage) {
    authentication->headers["u1"] = "token-someone-else";
    authentication->hosts.emplace("u1", YContactsHost::idc(base()));
    authentication->headers["u2"] = "token-u1";
    authentication->hosts.emplace("u2", YContactsHost::idc("http://127.0.0.1:" +
                                                           std::to_string(testing::closedLoopbackPort())));
    auto service = makeService();

    bool answered = false;
    EXPECT_FALSE(fetchPage(*service, "u1", false, std::nullopt, answered));
    EXPECT_TRUE(answered);
    EXPECT_EQ(server.seen().at(0).header("Authorization"), "token-someone-else");
    EXPECT_FALSE(fetchPage(*service, "u2", false, std::nullopt, answered));
    EXPECT_TRUE(answered);
    EXPECT_EQ(service->taskIds("u2"), std::vector<std::int64_t>{});
}

TEST_F(YContactsNetworkServiceTest, EarlyFailuresCarryTheirErrorAndSearchStaysSilent) {
    authentication->headers["other"] = "token-u1";
    authentication->hosts.emplace("other", YContactsHost::other());
    authentication->headers["noHost"] = "token-u1";
    auto service = makeService();

    bool answered = false;
    auto noHeader = fetchPage(*service, "stranger", false, std::nullopt, answered);
    ASSERT_TRUE(answered && noHeader);
    EXPECT_EQ(noHeader->error, YContactError::authorizationError);
    EXPECT_EQ(noHeader->count, 0);
    EXPECT_FALSE(noHeader->newContacts);
    auto noHost = fetchPage(*service, "noHost", false, std::nullopt, answered);
    ASSERT_TRUE(answered && noHost);
    EXPECT_EQ(noHost->error, YContactError::authorizationError);
    auto noURL = fetchPage(*service, "other", false, std::nullopt, answered);
    ASSERT_TRUE(answered && noURL);
    EXPECT_EQ(noURL->error, YContactError::urlError);

    // The fake answers synchronously and nothing is sent, so any callback would have run by now.
    int searchAnswers = 0;
    for (const auto* user : {"other", "noHost", "stranger"}) {
        service->searchContacts(user, std::nullopt, false, 10, std::string("a"),
                                [&searchAnswers](std::optional<std::vector<YContact>>) { ++searchAnswers; });
    }
    EXPECT_EQ(searchAnswers, 0);
    EXPECT_TRUE(server.seen().empty());

    std::optional<YContactUsageCountNetworkResponse> usage;
    service->getContactUsageCount("other", [&usage](auto response) { usage = response; });
    ASSERT_TRUE(usage);
    EXPECT_EQ(usage->error, YContactError::urlError);
}

TEST_F(YContactsNetworkServiceTest, SearchAsksForPageOneAndUsageCountsAreParsed) {
    authentication->headers["u1"] = "token-u1";
    authentication->hosts.emplace("u1", YContactsHost::idc(base()));
    auto service = makeService();

    std::promise<std::optional<std::vector<YContact>>> found;
    auto foundFuture = found.get_future();
    service->searchContacts("u1", std::nullopt, false, std::nullopt, std::string("an n"),
                            [&found](std::optional<std::vector<YContact>> contacts) { found.set_value(contacts); });
    ASSERT_TRUE(becomesReady(foundFuture));
    const auto contacts = foundFuture.get();
    ASSERT_TRUE(contacts);
    EXPECT_EQ(contacts->size(), 3u);
    EXPECT_EQ(server.seen().at(0).target,
              "/api/v1/accounts/self/contacts?include=emails%2Cphones%2Curls%2Cusage_count%2Ccategories&page=1&q=an%20n");

    std::promise<std::optional<YContactUsageCountNetworkResponse>> counted;
    auto countedFuture = counted.get_future();
    service->getContactUsageCount("u1", [&counted](auto response) { counted.set_value(response); });
    ASSERT_TRUE(becomesReady(countedFuture));
    const auto usage = countedFuture.get();
    ASSERT_TRUE(usage && usage->usageCountDetails);
    EXPECT_EQ(*usage->usageCountDetails, (std::map<std::string, std::string>{{"2", "8"}}));
    EXPECT_EQ(server.seen().at(1).target, "/api/v2/accounts/u1/contacts/ids?sort=usage_count");
}

TEST(YContactsNetworkServiceSharedTest, FirstCallsArgumentsWin) {
    auto first = YContactsNetworkService::shared(nullptr, std::make_shared<YContactsURLConstructor>(), nullptr);
    auto second = YContactsNetworkService::shared(std::make_shared<FakeAuthentication>(), nullptr,
                                                  std::make_shared<YContactsParser>());
    ASSERT_TRUE(first);
    EXPECT_EQ(first, second);
}

}  // namespace
}  // namespace ycontacts
