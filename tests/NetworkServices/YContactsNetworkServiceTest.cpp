#include "ycontacts/YNetworkManagerDependent/YContactsNetworkService.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <map>
#include <mutex>
#include <thread>

#include "Domain/ContactComparison.h"
#include "EndToEnd/ServerExpectations.h"
#include "Platform/YNetworkManager/NetworkTestServers.h"
#include "Support/FakeAuthentication.h"
#include "Support/LogCapture.h"
#include "Support/Waiting.h"
#include "Support/SampleServerFixture.h"
#include "ycontacts/Contacts/Data/Network/YContactsParser.h"
#include "ycontacts/Contacts/Data/Network/YContactsURLConstructor.h"
#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts {
namespace {

using testsupport::becomesReady;
using testsupport::eventually;
using testsupport::FakeAuthentication;
using testsupport::LogCapture;
using sample_server::Fault;
using sample_server::SampleContact;

std::vector<std::string> idsOf(const std::optional<std::vector<YContact>>& contacts) {
    std::vector<std::string> ids;
    if (contacts) {
        for (const auto& contact : *contacts) ids.push_back(contact.contactId);
    }
    return ids;
}

// The parsed contact against the server's own record of it: every field the wire carries must survive.
void expectSameContact(const sample_server::SampleContactsServer& server, const SampleContact& expected,
                       const YContact& actual, bool isOrg) {
    auto want = endtoend::expectedContact(server, expected, isOrg);
    // The page always carries the category list, empty or not; only the store leaves an empty one out.
    if (!want.categories) want.categories.emplace();
    EXPECT_TRUE(testing::sameContactFields(want, actual)) << "contact " << expected.contactId;
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
                                                const std::optional<std::string>& yoid = std::nullopt,
                                                bool isOrg = false) {
        return answerOf<YContactNetworkResponse>([&](auto callback) {
            service->getContacts(yuid, yoid, isOrg, startIndex, limit, updatedTime, callback);
        });
    }
    std::optional<std::vector<YContact>> search(const std::string& yuid, const std::string& text) {
        return answerOf<std::vector<YContact>>(
            [&](auto callback) { service->searchContacts(yuid, std::nullopt, false, 50, text, callback); });
    }
    std::optional<YContactUsageCountNetworkResponse> usageCounts(const std::string& yuid) {
        return answerOf<YContactUsageCountNetworkResponse>(
            [&](auto callback) { service->getContactUsageCount(yuid, callback); });
    }

    std::shared_ptr<FakeAuthentication> authentication = std::make_shared<FakeAuthentication>();
    std::shared_ptr<YContactsNetworkService> service = std::make_shared<YContactsNetworkService>(
        authentication, std::make_shared<YContactsURLConstructor>(), std::make_shared<YContactsParser>());
};

TEST_F(YContactsNetworkServiceTest, FullDownloadPagesCoverEveryContactOnceWithAllItsFields) {
    const auto expected = server.contacts("u1", false);
    ASSERT_EQ(expected.size(), 120u);

    std::vector<YContact> downloaded;
    std::vector<bool> hasMore;
    for (int index = 1; index <= 3; ++index) {
        auto response = page("u1", index, 50);
        ASSERT_TRUE(response);
        EXPECT_FALSE(response->error);
        // A full download has nothing to split: everything is new.
        EXPECT_FALSE(response->updatedContacts);
        EXPECT_FALSE(response->deletedContacts);
        ASSERT_TRUE(response->newContacts);
        EXPECT_EQ(response->count, static_cast<int>(response->newContacts->size()));
        hasMore.push_back(response->hasMore);
        downloaded.insert(downloaded.end(), response->newContacts->begin(), response->newContacts->end());
    }
    EXPECT_EQ(hasMore, (std::vector<bool>{true, true, false}));
    ASSERT_EQ(downloaded.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) expectSameContact(server, expected[i], downloaded[i], false);

    const auto log = server.requestLog();
    ASSERT_EQ(log.size(), 3u);
    EXPECT_EQ(log[0].path, "/api/v1/accounts/self/contacts");
    EXPECT_EQ(log[0].authorization, "token-u1");
    EXPECT_EQ(log[2].param("page"), "3");
    EXPECT_EQ(log[2].param("per_page"), "50");
    EXPECT_FALSE(log[0].hasParam("filter_updated_time"));
    EXPECT_EQ(service->taskIds("u1"), std::vector<std::int64_t>{});

    // Past the end: an empty, final page.
    auto beyond = page("u1", 9, 50);
    ASSERT_TRUE(beyond && beyond->newContacts);
    EXPECT_FALSE(beyond->error);
    EXPECT_TRUE(beyond->newContacts->empty());
    EXPECT_FALSE(beyond->hasMore);
}

TEST_F(YContactsNetworkServiceTest, OrganisationPagesThroughDirectAndProxyHostsAreMarkedOrg) {
    const auto expected = server.contacts("o1", true);
    ASSERT_EQ(expected.size(), 80u);
    auto direct = page("u1", 1, 1000, std::nullopt, "o1", true);
    ASSERT_TRUE(direct && direct->newContacts);
    ASSERT_EQ(direct->newContacts->size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) expectSameContact(server, expected[i], direct->newContacts->at(i), true);

    authentication->set("u1", "token-u1", YContactsHost::proxy(server.baseURL()));
    auto proxied = page("u1", 1, 1000, std::nullopt, "o1", true);
    ASSERT_TRUE(proxied && proxied->newContacts);
    EXPECT_FALSE(proxied->error);
    EXPECT_EQ(idsOf(proxied->newContacts), idsOf(direct->newContacts));
    const auto log = server.requestLog();
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(log[1].path, "/yct/getContactsList");
    EXPECT_EQ(log[1].param("yid"), "o1");

    // A user without an organisation gets the not-found reply (HTTP 404): an empty, final page, no error.
    expectNoPage(page("u2", 1, 1000, std::nullopt, std::nullopt, true), std::nullopt);
}

TEST_F(YContactsNetworkServiceTest, IncrementalPageSplitsNewUpdatedAndDeletedContacts) {
    const auto existing = server.contacts("u1", false);
    const auto since = server.clockMs();

    SampleContact added;
    added.firstName = "Zoë";
    added.lastName = "O'Brien";
    added.emails.push_back({"zoe.obrien@example.com", true});
    const auto addedId = server.addContact("u1", false, added);
    ASSERT_TRUE(addedId);
    auto edited = existing[3];
    edited.firstName = "Ångström";
    ASSERT_TRUE(server.updateContact("u1", false, edited));
    ASSERT_TRUE(server.deleteContact("u1", false, existing[7].contactId));

    auto response = page("u1", 1, 1000, static_cast<double>(since) + 0.75);
    ASSERT_TRUE(response);
    EXPECT_FALSE(response->error);
    EXPECT_FALSE(response->hasMore);
    EXPECT_EQ(idsOf(response->newContacts), std::vector<std::string>{*addedId});
    EXPECT_EQ(response->newContacts->at(0).lastName, "O'Brien");
    ASSERT_EQ(idsOf(response->updatedContacts), std::vector<std::string>{edited.contactId});
    EXPECT_EQ(response->updatedContacts->at(0).firstName, "Ångström");
    EXPECT_EQ(response->deletedContacts, std::vector<std::string>{existing[7].contactId});
    EXPECT_EQ(response->count, 3);

    const auto log = server.requestLog();
    ASSERT_EQ(log.size(), 1u);
    EXPECT_EQ(log[0].path, "/api/v1/sync/self/contacts");
    // The fraction of the sync time is dropped.
    EXPECT_EQ(log[0].param("filter_updated_time"), std::to_string(since));
    EXPECT_NE(log[0].param("include").find("show_deleted"), std::string::npos);
}

TEST_F(YContactsNetworkServiceTest, SearchAsksForPageOneAndUsageCountsMatchTheServer) {
    SampleContact added;
    added.firstName = "Quentin";
    added.lastName = "O'Brennan-Xylo";
    const auto addedId = server.addContact("u1", false, added);
    ASSERT_TRUE(addedId);

    auto found = search("u1", "o'brennan-x");
    ASSERT_TRUE(found);
    EXPECT_EQ(idsOf(found), std::vector<std::string>{*addedId});
    auto none = search("u1", "no-such-name-anywhere");
    ASSERT_TRUE(none);
    EXPECT_TRUE(none->empty());
    const auto log = server.requestLog();
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(log[0].param("page"), "1");
    EXPECT_EQ(log[0].param("q"), "o'brennan-x");
    EXPECT_EQ(log[0].param("per_page"), "50");

    auto counts = usageCounts("u1");
    ASSERT_TRUE(counts && counts->usageCountDetails);
    EXPECT_FALSE(counts->error);
    std::map<std::string, std::string> expected;
    for (const auto& [contactId, count] : server.usageCounts("u1")) expected[contactId] = std::to_string(count);
    EXPECT_EQ(expected.size(), 121u);
    EXPECT_EQ(*counts->usageCountDetails, expected);
}

TEST_F(YContactsNetworkServiceTest, RefusedAndUnreachableRequestsCarryTheirErrorNotAPage) {
    LogCapture log;
    authentication->set("intruder", "token-nobody", YContactsHost::idc(server.baseURL()));
    authentication->set(
        "offline", "token-u1",
        YContactsHost::idc("http://127.0.0.1:" + std::to_string(testing::closedLoopbackPort())));

    expectNoPage(page("intruder"), YContactError::authorizationError);
    EXPECT_EQ(server.requestLog().at(0).authorization, "token-nobody");
    auto refusedCounts = usageCounts("intruder");
    ASSERT_TRUE(refusedCounts);
    EXPECT_EQ(refusedCounts->error, YContactError::authorizationError);
    EXPECT_FALSE(refusedCounts->usageCountDetails);

    expectNoPage(page("offline"), YContactError::networkFailure);
    EXPECT_EQ(service->taskIds("offline"), std::vector<std::int64_t>{});
    // The failure is logged with the transport's no-connection code.
    EXPECT_TRUE(log.contains(
        {"yuid: offline", "transport code: " + std::to_string(YNetworkError::notConnectedToInternet)}));
}

TEST_F(YContactsNetworkServiceTest, ServerFaultsBecomeErrorsAndTheNotFoundEnvelopeAnEmptyPage) {
    struct Case {
        const char* name;
        Fault fault;
        std::optional<YContactError> error;
    };
    const std::vector<Case> cases = {
        {"status 500", Fault{.status = 500}, YContactError::unknownError},
        {"status 403", Fault{.status = 403}, YContactError::authorizationError},
        {"malformed body", Fault{.malformedBody = true}, YContactError::parserError},
        {"truncated body", Fault{.truncateBody = true}, YContactError::networkFailure},
        {"dropped connection", Fault{.dropConnection = true}, YContactError::networkFailure},
        {"not-found envelope with 200", Fault{.error404Envelope = true}, std::nullopt},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.name);
        auto fault = entry.fault;
        fault.pathContains = "/contacts";
        server.injectFault(fault);
        expectNoPage(page("u1"), entry.error);
        EXPECT_EQ(server.pendingFaults(), 0u);
    }
    server.injectFault(Fault{.pathContains = "/contacts/ids", .malformedBody = true});
    auto counts = usageCounts("u1");
    ASSERT_TRUE(counts);
    EXPECT_EQ(counts->error, YContactError::parserError);
    // The faults are used up: the same calls succeed again.
    auto healthy = page("u1");
    ASSERT_TRUE(healthy && healthy->newContacts);
    EXPECT_EQ(healthy->newContacts->size(), 100u);
}

TEST_F(YContactsNetworkServiceTest, CancellingInFlightDeliversAFailureInsteadOfThePage) {
    server.injectFault(Fault{.pathContains = "/contacts", .delay = std::chrono::minutes(2)});
    std::promise<std::optional<YContactNetworkResponse>> promise;
    auto future = promise.get_future();
    std::atomic<int> calls = 0;
    service->getContacts("u1", std::nullopt, false, 1, 100, std::nullopt,
                         [&promise, &calls](std::optional<YContactNetworkResponse> response) {
                             if (++calls == 1) promise.set_value(std::move(response));
                         });
    ASSERT_EQ(service->taskIds("u1")->size(), 1u);
    // The server holds the request once it has taken the fault.
    ASSERT_TRUE(eventually([&] { return server.pendingFaults() == 0; }));

    service->cancelTasks("u1");
    ASSERT_TRUE(becomesReady(future));
    expectNoPage(future.get(), YContactError::networkFailure);
    EXPECT_FALSE(service->taskIds("u1"));

    // Other users' requests are untouched and the service keeps working.
    auto other = page("u2", 1, 10);
    ASSERT_TRUE(other && other->newContacts);
    EXPECT_EQ(other->newContacts->size(), 10u);
    server.stop();
    EXPECT_EQ(calls, 1);
}

TEST_F(YContactsNetworkServiceTest, EarlyFailuresCarryTheirErrorAndSearchStaysSilent) {
    authentication->set("other", "token-u1", YContactsHost::other());
    {
        std::lock_guard lock(authentication->mutex);
        authentication->headers["noHost"] = "token-u1";
    }

    expectNoPage(page("stranger"), YContactError::authorizationError);
    expectNoPage(page("noHost"), YContactError::authorizationError);
    expectNoPage(page("other"), YContactError::urlError);

    // The fake answers synchronously and nothing is sent, so any callback would have run by now.
    int searchAnswers = 0;
    for (const auto* user : {"other", "noHost", "stranger"}) {
        service->searchContacts(user, std::nullopt, false, 10, std::string("a"),
                                [&searchAnswers](std::optional<std::vector<YContact>>) { ++searchAnswers; });
    }
    EXPECT_EQ(searchAnswers, 0);
    EXPECT_TRUE(server.requestLog().empty());

    std::optional<YContactUsageCountNetworkResponse> usage;
    service->getContactUsageCount("other", [&usage](auto response) { usage = response; });
    ASSERT_TRUE(usage);
    EXPECT_EQ(usage->error, YContactError::urlError);
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

TEST(YContactsNetworkServiceSharedTest, FirstCallsArgumentsWin) {
    auto first = YContactsNetworkService::shared(nullptr, std::make_shared<YContactsURLConstructor>(), nullptr);
    auto second = YContactsNetworkService::shared(std::make_shared<FakeAuthentication>(), nullptr,
                                                  std::make_shared<YContactsParser>());
    ASSERT_TRUE(first);
    EXPECT_EQ(first, second);
}

}  // namespace
}  // namespace ycontacts
