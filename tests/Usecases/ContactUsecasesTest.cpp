#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Usecases/UsecaseTestSupport.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetContact.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetContactImage.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetContacts.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetContactsFromIds.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetContactsList.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetOrgContactSuggestions.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetSuggestionContacts.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetUsageCountUseCase.h"

namespace ycontacts {
namespace {

using namespace usecasetest;
using ::testing::_;
using ::testing::Eq;
using ::testing::Optional;
using ::testing::StrictMock;

std::vector<std::string> idsOf(const std::optional<std::vector<YContact>>& contacts) {
    std::vector<std::string> ids;
    for (const auto& contact : contacts.value_or(std::vector<YContact>{})) ids.push_back(contact.contactId);
    return ids;
}

class ContactUsecasesTest : public ::testing::Test {
protected:
    std::shared_ptr<StrictMock<MockContactsDataManager>> dataManager =
        std::make_shared<StrictMock<MockContactsDataManager>>();
};

TEST_F(ContactUsecasesTest, GetContactsPassesEveryFieldAndDeliversEachAnswerInOrder) {
    auto usecase = std::make_shared<YGetContacts>(dataManager);
    YGetContactsRequest request("u1");
    request.yoid = "o1";
    request.searchStr = "ann";
    request.from = 40;
    request.limit = 20;
    request.isOrg = true;
    request.requestType = RequestType::both;
    // A local answer first, then the server's, then a failed one: each reaches the host as it came.
    EXPECT_CALL(*dataManager, getContacts("u1", Optional(std::string("o1")), Optional(std::string("ann")),
                                          Optional(40), Optional(20), Optional(true), RequestType::both, _))
        .WillOnce([](auto&&, auto&&, auto&&, auto, auto, auto, auto, YContactsDataManagerContract::ContactsCallback cb) {
            cb(std::vector<YContact>{YContact("1", "Ann", 0)});
            cb(std::vector<YContact>{YContact("1", "Ann", 0), YContact("2", "Annie", 0)});
            cb(std::nullopt);
        });
    Received<YGetContactsResponse> responses;

    usecase->execute(request, [&](const YGetContactsResponse& response) { responses.add(response); });

    ASSERT_TRUE(responses.waitFor(3));
    const auto got = responses.values();
    EXPECT_EQ(idsOf(got[0].contacts), std::vector<std::string>{"1"});
    EXPECT_EQ(idsOf(got[1].contacts), (std::vector<std::string>{"1", "2"}));
    EXPECT_FALSE(got[2].contacts.has_value());
}

TEST_F(ContactUsecasesTest, GetContactsListUsesTheListQueryWithTheSameFields) {
    auto usecase = std::make_shared<YGetContactsList>(dataManager);
    YGetContactsRequest request("u2");
    request.from = 0;
    EXPECT_CALL(*dataManager, getContactsList("u2", Eq(std::nullopt), Eq(std::nullopt), Optional(0), Eq(std::nullopt),
                                              Eq(std::nullopt), RequestType::preferLocal, _))
        .WillOnce([](auto&&, auto&&, auto&&, auto, auto, auto, auto, YContactsDataManagerContract::ContactsCallback cb) {
            cb(std::vector<YContact>{YContact("7", "Bo", 0)});
        });
    Received<YGetContactsResponse> responses;

    usecase->execute(request, [&](const YGetContactsResponse& response) { responses.add(response); });

    ASSERT_TRUE(responses.waitFor(1));
    EXPECT_EQ(idsOf(responses.values()[0].contacts), std::vector<std::string>{"7"});
}

TEST_F(ContactUsecasesTest, GetContactsFromIdsPassesTheThreeIdListsInOrder) {
    auto usecase = std::make_shared<YGetContactsFromIds>(dataManager);
    YGetContactsFromIdsRequest request("u1");
    request.contactIds = std::vector<std::string>{"c1"};
    request.emailIds = std::vector<std::string>{"a@x", "b@x"};
    request.contactYuids = std::vector<std::string>{"y1"};
    request.isOrg = false;
    request.requestType = RequestType::local;
    EXPECT_CALL(*dataManager,
                getContactsFromIds("u1", Optional(std::vector<std::string>{"c1"}),
                                   Optional(std::vector<std::string>{"a@x", "b@x"}),
                                   Optional(std::vector<std::string>{"y1"}), Optional(false), RequestType::local, _))
        .WillOnce([](auto&&, auto&&, auto&&, auto&&, auto, auto, YContactsDataManagerContract::ContactsCallback cb) {
            cb(std::vector<YContact>{YContact("c1", "Cy", 0)});
        });
    Received<YGetContactsResponse> responses;

    usecase->execute(request, [&](const YGetContactsResponse& response) { responses.add(response); });

    ASSERT_TRUE(responses.waitFor(1));
    EXPECT_EQ(idsOf(responses.values()[0].contacts), std::vector<std::string>{"c1"});
}

TEST_F(ContactUsecasesTest, SuggestionResponseCarriesTheSearchTextTheDataManagerAnsweredFor) {
    auto usecase = std::make_shared<YGetSuggestionContacts>(dataManager);
    YGetSuggestionContactsRequest request("u1", "anna");
    request.yoid = "o1";
    request.isOrg = true;
    request.requestType = RequestType::server;
    EXPECT_CALL(*dataManager,
                getSuggestionContacts("u1", Optional(std::string("o1")), "anna", 20, Optional(true), RequestType::server, _))
        .WillOnce([](auto&&, auto&&, auto&&, auto, auto, auto, YContactsDataManagerContract::SuggestionsCallback cb) {
            // An answer for the shorter text typed a moment earlier.
            cb("ann", std::vector<YSuggestionContact>{YSuggestionContact("1", "ann@x", "Ann", true)});
            cb("anna", std::nullopt);
        });
    Received<YGetSuggestionContactsResponse> responses;

    usecase->execute(request, [&](const YGetSuggestionContactsResponse& response) { responses.add(response); });

    ASSERT_TRUE(responses.waitFor(2));
    const auto got = responses.values();
    EXPECT_EQ(got[0].searchStr, "ann");
    ASSERT_TRUE(got[0].contacts.has_value());
    ASSERT_EQ(got[0].contacts->size(), 1u);
    EXPECT_EQ(got[0].contacts->front().email, "ann@x");
    EXPECT_EQ(got[1].searchStr, "anna");
    EXPECT_FALSE(got[1].contacts.has_value());
}

TEST_F(ContactUsecasesTest, OrgSuggestionsPassTheirOwnFieldsAndTheAnsweredSearchText) {
    auto usecase = std::make_shared<YGetOrgContactSuggestions>(dataManager);
    YGetOrgContactSuggestionsRequest request("u1");
    request.searchStr = "bo";
    request.from = 10;
    request.shouldSearchNickname = true;
    EXPECT_CALL(*dataManager, getOrgContactSuggestions("u1", Optional(std::string("bo")), Optional(10), 100, true,
                                                       true, _))
        .WillOnce([](auto&&, auto&&, auto, auto, auto, auto, YContactsDataManagerContract::OrgSuggestionsCallback cb) {
            cb(std::nullopt, std::vector<YContact>{YContact("9", "Bob", 0)});
        });
    Received<YGetOrgContactSuggestionsResponse> responses;

    usecase->execute(request, [&](const YGetOrgContactSuggestionsResponse& response) { responses.add(response); });

    ASSERT_TRUE(responses.waitFor(1));
    const auto got = responses.values()[0];
    EXPECT_FALSE(got.searchStr.has_value());
    EXPECT_EQ(idsOf(got.contacts), std::vector<std::string>{"9"});
}

TEST_F(ContactUsecasesTest, GetContactPassesItsIdsInTheDataManagersOrderAndLeavesErrorEmpty) {
    auto usecase = std::make_shared<YGetContact>(dataManager);
    YGetContactRequest request("u1");
    request.emailId = "e@x";
    request.contactId = "c9";
    request.contactYuid = "y9";
    request.preferPersonalInfo = true;
    EXPECT_CALL(*dataManager, getContact("u1", Optional(std::string("c9")), Optional(std::string("y9")),
                                         Optional(std::string("e@x")), true, _))
        .WillOnce([](auto&&, auto&&, auto&&, auto&&, auto, YContactsDataManagerContract::ContactCallback cb) {
            cb(YContact("c9", "Cee", 0));
            cb(std::nullopt);
        });
    Received<YGetContactResponse> responses;

    usecase->execute(request, [&](const YGetContactResponse& response) { responses.add(response); });

    ASSERT_TRUE(responses.waitFor(2));
    const auto got = responses.values();
    ASSERT_TRUE(got[0].contact.has_value());
    EXPECT_EQ(got[0].contact->contactId, "c9");
    EXPECT_FALSE(got[0].error.has_value());
    EXPECT_FALSE(got[1].contact.has_value());
    EXPECT_FALSE(got[1].error.has_value());
}

TEST_F(ContactUsecasesTest, GetContactImageMapsTheHandlersThreeValuesAndItsCopySharesTheDataManager) {
    auto original = std::make_shared<YGetContactImage>(dataManager);
    auto usecase = original->copy();
    EXPECT_EQ(usecase->dataManager, original->dataManager);
    EXPECT_NE(usecase, original);

    YGetContactImageRequest request("u1");
    request.emailId = "e@x";
    request.contactId = "c1";
    request.contactYuid = "y1";
    request.isThumbnail = false;
    request.metaData = YActivityMetaData("photo");
    request.contactType = YContactType::group;
    EXPECT_CALL(*dataManager,
                getContactImage("u1", Optional(std::string("y1")), Optional(std::string("e@x")),
                                Optional(std::string("c1")), false, Optional(YActivityMetaData("photo")),
                                YContactType::group, _))
        .WillOnce([](auto&&, auto&&, auto&&, auto&&, auto, auto&&, auto, YContactsDataManagerContract::ImageHandler h) {
            h(std::vector<std::uint8_t>{1, 2, 3}, std::string("/photos/u1_normal/c1.png"), std::string("c1"));
        });
    Received<YGetContactImageResponse> responses;

    usecase->execute(request, [&](const YGetContactImageResponse& response) { responses.add(response); });

    ASSERT_TRUE(responses.waitFor(1));
    const auto got = responses.values()[0];
    EXPECT_EQ(got.contactImageData, (std::vector<std::uint8_t>{1, 2, 3}));
    EXPECT_EQ(got.filePath, "/photos/u1_normal/c1.png");
    EXPECT_EQ(got.contactId, "c1");
}

TEST_F(ContactUsecasesTest, UsageCountAsksOnlyForTheUser) {
    auto usecase = std::make_shared<YGetUsageCountUseCase>(dataManager);
    YGetContactsRequest request("u5");
    request.searchStr = "ignored";
    request.isOrg = true;
    EXPECT_CALL(*dataManager, getUsageCount("u5", _))
        .WillOnce([](auto&&, YContactsDataManagerContract::UsageCountCallback cb) {
            cb(std::map<std::string, std::string>{{"c1", "4"}});
        });
    Received<YGetUsageCountResponse> responses;

    usecase->execute(request, [&](const YGetUsageCountResponse& response) { responses.add(response); });

    ASSERT_TRUE(responses.waitFor(1));
    EXPECT_EQ(responses.values()[0].usageCountMap, (std::map<std::string, std::string>{{"c1", "4"}}));
}

TEST_F(ContactUsecasesTest, UsecaseReleasedBeforeTheDataManagerAnswersNeverCallsBack) {
    auto usecase = std::make_shared<YGetContacts>(dataManager);
    std::promise<YContactsDataManagerContract::ContactsCallback> pending;
    auto pendingAnswer = pending.get_future();
    EXPECT_CALL(*dataManager, getContacts("u1", _, _, _, _, _, _, _))
        .WillOnce([&](auto&&, auto&&, auto&&, auto, auto, auto, auto, YContactsDataManagerContract::ContactsCallback cb) {
            pending.set_value(std::move(cb));
        });
    Received<YGetContactsResponse> responses;
    usecase->execute(YGetContactsRequest("u1"), [&](const YGetContactsResponse& response) { responses.add(response); });
    ASSERT_EQ(pendingAnswer.wait_for(waitLimit), std::future_status::ready);
    auto answer = pendingAnswer.get();

    std::weak_ptr<YGetContacts> watch = usecase;
    usecase.reset();
    ASSERT_TRUE(drainUsecaseQueue());  // the running task has let go of its temporary hold
    ASSERT_TRUE(watch.expired());
    answer(std::vector<YContact>{YContact("1", "Ann", 0)});

    EXPECT_TRUE(responses.values().empty());
}

TEST_F(ContactUsecasesTest, UsecaseWithoutDataManagerLogsAndDropsTheRequest) {
    LoggedWarnings warnings;
    auto usecase = std::make_shared<YGetSuggestionContacts>(nullptr);
    Received<YGetSuggestionContactsResponse> responses;

    usecase->execute(YGetSuggestionContactsRequest("u1", "a"),
                     [&](const YGetSuggestionContactsResponse& response) { responses.add(response); });

    EXPECT_TRUE(warnings.waitForLinesContaining("YGetSuggestionContacts has no data manager", 1));
    ASSERT_TRUE(drainUsecaseQueue());
    EXPECT_TRUE(responses.values().empty());
}

}  // namespace
}  // namespace ycontacts
