#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Support/FakeDataManagers.h"
#include "Support/LogCapture.h"
#include "Support/UsecaseSupport.h"
#include "Support/Waiting.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetContact.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetContactImage.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetContacts.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetContactsList.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetOrgContactSuggestions.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetSuggestionContacts.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetUsageCountUseCase.h"

namespace ycontacts {
namespace {

using namespace testsupport;
using ::testing::_;
using ::testing::DoAll;
using ::testing::InvokeArgument;
using ::testing::StrictMock;
using Ids = std::vector<std::string>;
using Contacts = std::vector<YContact>;

Ids idsOf(const std::optional<Contacts>& contacts) {
    Ids ids;
    for (const auto& contact : contacts.value_or(Contacts{})) ids.push_back(contact.contactId);
    return ids;
}

// The ids each response carried, in order; {"none"} stands for a response without a list.
template <class Response>
std::vector<Ids> idsOfEach(const std::vector<Response>& responses) {
    std::vector<Ids> result;
    for (const auto& response : responses) result.push_back(response.contacts ? idsOf(response.contacts) : Ids{"none"});
    return result;
}

class ContactUsecasesTest : public ::testing::Test {
protected:
    std::shared_ptr<StrictMock<FakeContactsDataManager>> dataManager =
        std::make_shared<StrictMock<FakeContactsDataManager>>();
};

TEST_F(ContactUsecasesTest, GetContactsAsksTheRequestsQueryAndDeliversEachAnswerInOrder) {
    auto usecase = std::make_shared<YGetContacts>(dataManager);
    YGetContactsRequest request("u1");
    request.yoid = "o1";
    request.searchStr = "ann";
    request.from = 40;
    request.limit = 20;
    request.isOrg = true;
    request.requestType = RequestType::both;
    // A local answer first, then the server's, then a failed one: each reaches the host as it came.
    EXPECT_CALL(*dataManager, getContacts(YContactsQuery{.yuid = "u1",
                                                         .yoid = "o1",
                                                         .searchStr = "ann",
                                                         .from = 40,
                                                         .limit = 20,
                                                         .isOrg = true,
                                                         .requestType = RequestType::both},
                                          _))
        .WillOnce(DoAll(InvokeArgument<1>(Contacts{YContact("1", "Ann", 0)}),
                        InvokeArgument<1>(Contacts{YContact("1", "Ann", 0), YContact("2", "Annie", 0)}),
                        InvokeArgument<1>(std::nullopt)));

    const auto got = responsesOf<YGetContactsResponse>(*usecase, request, 3);

    EXPECT_EQ(idsOfEach(got), (std::vector<Ids>{{"1"}, {"1", "2"}, {"none"}}));
}

TEST_F(ContactUsecasesTest, GetContactsListUsesTheListQueryWithTheSameFields) {
    auto usecase = std::make_shared<YGetContactsList>(dataManager);
    YGetContactsRequest request("u2");
    request.from = 0;
    EXPECT_CALL(*dataManager, getContactsList(request.query(), _))
        .WillOnce(InvokeArgument<1>(Contacts{YContact("7", "Bo", 0)}));

    const auto got = responsesOf<YGetContactsResponse>(*usecase, request, 1);

    EXPECT_EQ(idsOfEach(got), std::vector<Ids>{{"7"}});
}

TEST_F(ContactUsecasesTest, SuggestionResponseCarriesTheSearchTextTheDataManagerAnsweredFor) {
    auto usecase = std::make_shared<YGetSuggestionContacts>(dataManager);
    YGetSuggestionContactsRequest request("u1", "anna");
    request.yoid = "o1";
    request.isOrg = true;
    request.requestType = RequestType::server;
    // First an answer for the shorter text typed a moment earlier.
    const std::vector<YSuggestionContact> earlier{YSuggestionContact("1", "ann@x", "Ann", true)};
    EXPECT_CALL(*dataManager, getSuggestionContacts(request.query(), _))
        .WillOnce(DoAll(InvokeArgument<1>(std::string("ann"), earlier),
                        InvokeArgument<1>(std::string("anna"), std::nullopt)));

    const auto got = responsesOf<YGetSuggestionContactsResponse>(*usecase, request, 2);

    ASSERT_EQ(got.size(), 2u);
    EXPECT_EQ(got[0].searchStr, "ann");
    ASSERT_TRUE(got[0].contacts.has_value());
    ASSERT_EQ(got[0].contacts->size(), 1u);
    EXPECT_EQ(got[0].contacts->front().email, "ann@x");
    EXPECT_EQ(got[1].searchStr, "anna");
    EXPECT_FALSE(got[1].contacts.has_value());
}

TEST_F(ContactUsecasesTest, OrgSuggestionsCarryTheAnsweredSearchText) {
    auto usecase = std::make_shared<YGetOrgContactSuggestions>(dataManager);
    YGetOrgContactSuggestionsRequest request("u1");
    request.searchStr = "bo";
    EXPECT_CALL(*dataManager, getOrgContactSuggestions(request.query(), _))
        .WillOnce(InvokeArgument<1>(std::nullopt, Contacts{YContact("9", "Bob", 0)}));

    const auto got = responsesOf<YGetOrgContactSuggestionsResponse>(*usecase, request, 1);

    ASSERT_EQ(got.size(), 1u);
    EXPECT_FALSE(got[0].searchStr.has_value());
    EXPECT_EQ(idsOf(got[0].contacts), Ids{"9"});
}

TEST_F(ContactUsecasesTest, GetContactLeavesTheErrorEmpty) {
    auto usecase = std::make_shared<YGetContact>(dataManager);
    EXPECT_CALL(*dataManager, getContact(_, _))
        .WillOnce(DoAll(InvokeArgument<1>(YContact("c9", "Cee", 0)), InvokeArgument<1>(std::nullopt)));
    const YGetContactRequest request("u1");

    const auto got = responsesOf<YGetContactResponse>(*usecase, request, 2);

    ASSERT_EQ(got.size(), 2u);
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

    const YGetContactImageRequest request("u1");
    EXPECT_CALL(*dataManager, getContactImage(_, _))
        .WillOnce(InvokeArgument<1>(std::vector<std::uint8_t>{1, 2, 3}, std::string("/photos/u1_normal/c1.png"),
                                    std::string("c1")));

    const auto got = responsesOf<YGetContactImageResponse>(*usecase, request, 1);

    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(got[0].contactImageData, (std::vector<std::uint8_t>{1, 2, 3}));
    EXPECT_EQ(got[0].filePath, "/photos/u1_normal/c1.png");
    EXPECT_EQ(got[0].contactId, "c1");
}

TEST_F(ContactUsecasesTest, UsageCountAsksOnlyForTheUser) {
    auto usecase = std::make_shared<YGetUsageCountUseCase>(dataManager);
    YGetContactsRequest request("u5");
    request.searchStr = "ignored";
    request.isOrg = true;
    const std::map<std::string, std::string> counts{{"c1", "4"}};
    EXPECT_CALL(*dataManager, getUsageCount("u5", _)).WillOnce(InvokeArgument<1>(counts));

    const auto got = responsesOf<YGetUsageCountResponse>(*usecase, request, 1);

    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(got[0].usageCountMap, counts);
}

TEST_F(ContactUsecasesTest, UsecaseReleasedBeforeTheDataManagerAnswersNeverCallsBack) {
    auto usecase = std::make_shared<YGetContacts>(dataManager);
    std::promise<YContactsDataManagerContract::ContactsCallback> pending;
    auto pendingAnswer = pending.get_future();
    EXPECT_CALL(*dataManager, getContacts(_, _))
        .WillOnce([&](auto&&, YContactsDataManagerContract::ContactsCallback cb) { pending.set_value(std::move(cb)); });
    Received<YGetContactsResponse> responses;
    usecase->execute(YGetContactsRequest("u1"), [&](const YGetContactsResponse& response) { responses.add(response); });
    ASSERT_TRUE(becomesReady(pendingAnswer));
    auto answer = pendingAnswer.get();

    std::weak_ptr<YGetContacts> watch = usecase;
    usecase.reset();
    ASSERT_TRUE(drainUsecaseQueue());  // the running task has let go of its temporary hold
    ASSERT_TRUE(watch.expired());
    answer(Contacts{YContact("1", "Ann", 0)});

    EXPECT_TRUE(responses.values().empty());
}

TEST_F(ContactUsecasesTest, UsecaseWithoutDataManagerLogsAndDropsTheRequest) {
    LogCapture warnings(Logger::Level::warning);
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
