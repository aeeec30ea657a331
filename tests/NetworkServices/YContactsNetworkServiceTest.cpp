#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <map>

#include "Platform/YNetworkManager/NetworkTestServers.h"
#include "Support/FakeAuthentication.h"
#include "Support/LogCapture.h"
#include "Support/SampleServerFixture.h"
#include "Support/Waiting.h"
#include "ycontacts/Contacts/Data/Network/YContactsParser.h"
#include "ycontacts/Contacts/Data/Network/YContactsURLConstructor.h"
#include "ycontacts/YNetworkManagerDependent/YContactsNetworkService.h"

namespace ycontacts {
namespace {

using sample_server::Fault;
using sample_server::SampleContact;
using testsupport::becomesReady;

std::vector<std::string> idsOf(const std::optional<std::vector<YContact>>& contacts) {
    std::vector<std::string> ids;
    for (const auto& contact : contacts.value_or(std::vector<YContact>{})) ids.push_back(contact.contactId);
    return ids;
}

// A response that carries `error` (or none) and an empty, final page without contacts.
void expectNoPage(const std::optional<YContactNetworkResponse>& response, std::optional<YContactError> error) {
    ASSERT_TRUE(response);
    EXPECT_EQ(response->error, error);
    EXPECT_FALSE(response->hasMore);
    EXPECT_EQ(response->count, 0);
    EXPECT_FALSE(response->newContacts);
}

// u1 belongs to organisation o1; u2 has no organisation.
class YContactsNetworkServiceTest : public testsupport::SampleServerTest {
protected:
    YContactsNetworkServiceTest() : SampleServerTest({.users = 2, .usersWithoutOrg = 1}) {}

    void SetUp() override {
        SampleServerTest::SetUp();
        authentication->set("u1", "token-u1", YContactsHost::idc(server.baseURL()));
        authentication->set("u2", "token-u2", YContactsHost::idc(server.baseURL()));
    }

    // What a call delivered to its callback, or nothing when it never answered.
    template <class Answer, class Call>
    static std::optional<Answer> answerOf(Call call) {
        std::promise<std::optional<Answer>> promise;
        auto future = promise.get_future();
        call([&promise](std::optional<Answer> answer) { promise.set_value(std::move(answer)); });
        return becomesReady(future) ? future.get() : std::nullopt;
    }
    std::optional<YContactNetworkResponse> page(const std::string& yuid, int startIndex = 1, int limit = 100,
                                                std::optional<double> updatedTime = std::nullopt,
                                                const std::optional<std::string>& yoid = std::nullopt) {
        return answerOf<YContactNetworkResponse>([&](auto callback) {
            service->getContacts(yuid, yoid, yoid.has_value(), startIndex, limit, updatedTime, callback);
        });
    }
    std::optional<YContactUsageCountNetworkResponse> usageCounts(const std::string& yuid) {
        return answerOf<YContactUsageCountNetworkResponse>(
            [&](auto callback) { service->getContactUsageCount(yuid, callback); });
    }
    std::shared_ptr<testsupport::FakeAuthentication> authentication =
        std::make_shared<testsupport::FakeAuthentication>();
    std::shared_ptr<YContactsNetworkService> service = std::make_shared<YContactsNetworkService>(
        authentication, std::make_shared<YContactsURLConstructor>(), std::make_shared<YContactsParser>());
};

// Field by field, what a download brings is checked against the server in tests/EndToEnd.
TEST_F(YContactsNetworkServiceTest, PagesOfEachKindAskForTheirOwnAddressAndCoverEveryContactOnce) {
    std::vector<std::string> downloaded;
    for (int index = 1; index <= 4; ++index) {
        auto response = page("u1", index, 50);
        ASSERT_TRUE(response && response->newContacts);
        EXPECT_FALSE(response->error || response->updatedContacts || response->deletedContacts);
        EXPECT_EQ(response->count, static_cast<int>(response->newContacts->size()));
        EXPECT_EQ(response->hasMore, index < 3);
        for (const auto& id : idsOf(response->newContacts)) downloaded.push_back(id);
    }
    std::vector<std::string> expected;
    for (const auto& contact : server.contacts("u1", false)) expected.push_back(contact.contactId);
    EXPECT_EQ(downloaded, expected);

    const auto since = server.clockMs();
    ASSERT_TRUE(server.deleteContact("u1", false, expected[7]));
    auto incremental = page("u1", 1, 1000, static_cast<double>(since) + 0.75);
    ASSERT_TRUE(incremental);
    EXPECT_EQ(incremental->deletedContacts, std::vector<std::string>{expected[7]});
    auto direct = page("u1", 1, 1000, std::nullopt, "o1");
    ASSERT_TRUE(direct && direct->newContacts);
    EXPECT_EQ(direct->newContacts->size(), server.contacts("o1", true).size());
    authentication->set("u1", "token-u1", YContactsHost::proxy(server.baseURL()));
    auto proxied = page("u1", 1, 1000, std::nullopt, "o1");
    ASSERT_TRUE(proxied && proxied->newContacts);
    EXPECT_EQ(idsOf(proxied->newContacts), idsOf(direct->newContacts));

    const auto log = server.requestLog();
    ASSERT_EQ(log.size(), 7u);
    EXPECT_EQ(log[0].path, "/api/v1/accounts/self/contacts");
    EXPECT_EQ(log[0].authorization, "token-u1");
    EXPECT_FALSE(log[0].hasParam("filter_updated_time"));
    EXPECT_EQ(log[4].path, "/api/v1/sync/self/contacts");
    EXPECT_EQ(log[4].param("filter_updated_time"), std::to_string(since)) << "the fraction is dropped";
    EXPECT_EQ(log[6].path, "/yct/getContactsList");
    EXPECT_EQ(log[6].param("yid"), "o1");
    EXPECT_EQ(service->taskIds("u1"), std::vector<std::int64_t>{});
}

TEST_F(YContactsNetworkServiceTest, SearchAsksForPageOneAndUsageCountsMatchTheServer) {
    SampleContact added;
    added.firstName = "Quentin";
    added.lastName = "O'Brennan-Xylo";
    const auto addedId = server.addContact("u1", false, added);
    ASSERT_TRUE(addedId);
    for (const auto& [text, expected] : {std::pair{"o'brennan-x", std::vector<std::string>{*addedId}},
                                         std::pair{"no-such-name-anywhere", std::vector<std::string>{}}}) {
        const auto found = answerOf<std::vector<YContact>>([&](auto callback) {
            service->searchContacts("u1", std::nullopt, false, 50, std::string(text), callback);
        });
        ASSERT_TRUE(found);
        EXPECT_EQ(idsOf(found), expected);
    }
    const auto request = server.requestLog().at(0);
    EXPECT_EQ(request.param("per_page"), "50");

    auto counts = usageCounts("u1");
    ASSERT_TRUE(counts && counts->usageCountDetails);
    EXPECT_FALSE(counts->error);
    std::map<std::string, std::string> expected;
    for (const auto& [contactId, count] : server.usageCounts("u1")) expected[contactId] = std::to_string(count);
    EXPECT_EQ(expected.size(), 121u);
    EXPECT_EQ(*counts->usageCountDetails, expected);
}

// Each way a request can fail, for a page and for the usage counts: the error it carries, and no page.
TEST_F(YContactsNetworkServiceTest, FailuresBecomeTheirErrorAndTheNotFoundReplyAnEmptyPage) {
    using E = YContactError;
    authentication->set("intruder", "token-nobody", YContactsHost::idc(server.baseURL()));
    authentication->set("offline", "token-u1",
                        YContactsHost::idc("http://127.0.0.1:" + std::to_string(testing::closedLoopbackPort())));
    authentication->set("other", "token-u1", YContactsHost::other());
    {
        std::lock_guard lock(authentication->mutex);
        authentication->headers["noHost"] = "token-u1";
    }
    const struct {
        const char* name;
        std::string user;
        std::optional<Fault> fault;
        std::optional<E> pageError, countsError;
    } rows[] = {
        {"refused token", "intruder", std::nullopt, E::authorizationError, E::authorizationError},
        {"no session", "stranger", std::nullopt, E::authorizationError, E::authorizationError},
        {"no host", "noHost", std::nullopt, E::authorizationError, E::authorizationError},
        {"host without these calls", "other", std::nullopt, E::urlError, E::urlError},
        {"unreachable", "offline", std::nullopt, E::networkFailure, E::networkFailure},
        {"status 500", "u1", Fault{.status = 500}, E::unknownError, E::unknownError},
        {"status 403", "u1", Fault{.status = 403}, E::authorizationError, E::authorizationError},
        {"malformed body", "u1", Fault{.malformedBody = true}, E::parserError, E::parserError},
        {"truncated body", "u1", Fault{.truncateBody = true}, E::networkFailure, E::networkFailure},
        {"not-found envelope", "u1", Fault{.error404Envelope = true}, std::nullopt, E::parserError},
    };
    testsupport::LogCapture log;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        if (row.fault) server.injectFault(*row.fault);
        expectNoPage(page(row.user), row.pageError);
        if (row.fault) server.injectFault(*row.fault);
        const auto counts = usageCounts(row.user);
        ASSERT_TRUE(counts);
        EXPECT_EQ(counts->error, row.countsError);
        EXPECT_FALSE(counts->usageCountDetails);
        EXPECT_TRUE(service->taskIds(row.user).value_or(std::vector<std::int64_t>{}).empty());
    }
    EXPECT_TRUE(
        log.contains({"yuid: offline", "transport code: " + std::to_string(YNetworkError::notConnectedToInternet)}));
    // A search that cannot be sent stays silent; the fake answers at once, so any callback would have run.
    int searchAnswers = 0;
    for (const auto* user : {"other", "noHost", "stranger"}) {
        service->searchContacts(user, std::nullopt, false, 10, std::string("a"), [&](auto) { ++searchAnswers; });
    }
    EXPECT_EQ(searchAnswers, 0);
    // The faults are used up: the same call succeeds again.
    auto healthy = page("u1");
    ASSERT_TRUE(healthy && healthy->newContacts);
    EXPECT_EQ(healthy->newContacts->size(), 100u);
    // A user without an organisation gets the not-found reply (HTTP 404): an empty, final page, no error.
    expectNoPage(page("u2", 1, 1000, std::nullopt, "o2"), std::nullopt);
}

TEST_F(YContactsNetworkServiceTest, CancellingInFlightDeliversAFailureInsteadOfThePage) {
    server.injectFault(Fault{.pathContains = "/contacts", .delay = std::chrono::minutes(2)});
    std::promise<std::optional<YContactNetworkResponse>> promise;
    auto future = promise.get_future();
    std::atomic<int> calls = 0;
    service->getContacts("u1", std::nullopt, false, 1, 100, std::nullopt, [&](auto response) {
        if (++calls == 1) promise.set_value(std::move(response));
    });
    ASSERT_EQ(service->taskIds("u1")->size(), 1u);
    // The server holds the request once it has taken the fault.
    ASSERT_TRUE(testsupport::eventually([&] { return server.pendingFaults() == 0; }));
    service->cancelTasks("u1");
    ASSERT_TRUE(becomesReady(future));
    expectNoPage(future.get(), YContactError::networkFailure);
    EXPECT_FALSE(service->taskIds("u1"));
    server.stop();
    EXPECT_EQ(calls, 1);
}

TEST_F(YContactsNetworkServiceTest, WithTheClientGoneAPageRequestStillAnswers) {
    auto client = std::make_shared<YNetworkManager>();
    auto orphan = std::make_shared<YContactsNetworkService>(authentication, std::make_shared<YContactsURLConstructor>(),
                                                            std::make_shared<YContactsParser>(), client);
    client.reset();
    std::optional<YContactNetworkResponse> answer;
    orphan->getContacts("u1", std::nullopt, false, 1, 10, std::nullopt, [&answer](auto response) { answer = response; });
    expectNoPage(answer, YContactError::networkFailure);
    EXPECT_TRUE(server.requestLog().empty());
}

}  // namespace
}  // namespace ycontacts
